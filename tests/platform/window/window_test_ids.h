// SPDX-License-Identifier: MIT

#ifndef VT63X_TESTS_PLATFORM_WINDOW_WINDOW_TEST_IDS_H
#define VT63X_TESTS_PLATFORM_WINDOW_WINDOW_TEST_IDS_H

// Macros, since the resource script reads them too.
#define ALL_CONTROLS 201
#define SMALL 202
#define TEST_MENU 203

#define LABEL 10
#define SINGLE 11
#define UPPER 12
#define READ_ONLY 13
#define GROUP 14
#define MULTI 15
#define ONE_LINE 16
#define DEFAULT_BUTTON 17
#define OTHER_BUTTON 18
#define TWIN_1 19
#define TWIN_2 20
#define DISABLED_BUTTON 21
#define HIDDEN_BUTTON 22
#define CHECK 23
#define LIST 24
#define COMBO 25

#define MENU_OPEN 301
#define MENU_DEEP 302
#define MENU_INFO 303

#endif
