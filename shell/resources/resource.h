// SPDX-License-Identifier: MIT

#ifndef VT63X_SHELL_RESOURCES_RESOURCE_H
#define VT63X_SHELL_RESOURCES_RESOURCE_H

// Numbers of the dialogs, controls and commands. Macros, since the resource script reads them too.
// Some numbers serve in several dialogs.

// Of controls that nobody asks for.
#define IDC_STATIC (-1)

#define IDD_MAIN 101
#define IDR_MENU 102
#define IDI_PROGRAM 103
#define IDD_ABOUT 104
#define IDD_PORT_SETTINGS 105
#define IDD_REGISTER 106
#define IDD_PROCESSING 108
#define IDD_CARD_READER 114

// --- main window ---
#define IDC_PROCESS_LINE 5
#define IDC_PORT_NAME 1010
#define IDC_BIT_RATE 1011
#define IDC_PORT_STATE 1012
#define IDC_COMMAND_FILE 1013
#define IDC_LOG 1014
#define IDC_SECOND_PORT 1015
#define IDC_SPARE_FIELD 1016
#define IDC_COMMAND_LINE 1018
#define IDC_OPEN 1032
#define IDC_CLOSE 1033
#define IDC_ALL_TO_115K 1034
#define IDC_SELECT_WCF 1035
#define IDC_PROCESS_WCF 1036
#define IDC_PORT_GROUP 1037
#define IDC_ACTION_GROUP 1038
#define IDC_OVERRIDE_NAME 1039
#define IDC_OVERRIDE_LABEL 1040
#define IDC_REGISTER_IO 1041
#define IDC_CPP_INTERFACE 1042
#define IDC_STATUS_GROUP 1043
#define IDC_DUMP_REGISTER 1044
#define IDC_CARD_READER 1045

// --- menu ---
#define IDM_EXIT 40001
#define IDM_INFO 40002
#define IDM_SETTINGS 40003
#define IDM_OPEN 40005
#define IDM_CLOSE 40006
#define IDM_ACCESS_REGISTER 40007
#define IDM_PROCESS_FILE 40008
#define IDM_9600_BPS 40010
#define IDM_115200_BPS 40014
#define IDM_SAVE_LOG 40015
#define IDM_CLEAR_LOG 40016
#define IDM_SELECT_FILE 40017
#define IDM_HELP_COMMANDS 40025

// --- commands without an item of the menu ---
#define IDM_REAP_THREADS 50499
#define IDM_FIRST_USER_ACTION 50500
#define IDM_LAST_USER_ACTION 50532

// --- about box ---
#define IDC_ABOUT_CLOSE 1003

// --- port settings ---
#define IDC_DISCARD 3
#define IDC_APPLY 1001
#define IDC_PORT_LABEL 1003
#define IDC_PORT_LIST 1005
#define IDC_VERIFY_LABEL 1006
#define IDC_VERIFY 1007
#define IDC_VERIFY_RESULT 1009

// --- register access ---
#define IDC_SET 3
#define IDC_GET 4
#define IDC_REGISTER_QUIT 1015
#define IDC_VALUE 1016
#define IDC_ADDRESS 1017
#define IDC_CLEAR_LOG 1020
#define IDC_BINARY 1022
#define IDC_RESULT 1024
#define IDC_LOG_ENABLE 1027
#define IDC_REGISTER_LOG_GROUP 1044

// --- processing ---
#define IDC_BREAK 1030
#define IDC_PROCESSING_TEXT 1031

// --- card reader ---
#define IDC_HALT 201
#define IDC_REQUEST_SELECT 204
#define IDC_REQUEST 205
#define IDC_ANTICOLLISION 208
#define IDC_AUTHENTICATE_A 209
#define IDC_KEY_A 212
#define IDC_KEY_B 213
#define IDC_AUTHENTICATE_B 214
#define IDC_DATA 215
#define IDC_WRITE_PAGE 217
#define IDC_READER_EXIT 218
#define IDC_READ 224
#define IDC_WRITE 225
#define IDC_BLOCK 236
#define IDC_REQUEST_CODE 1064
#define IDC_BLOCK_LABEL 1067
#define IDC_KEY_A_LABEL 1068
#define IDC_KEY_B_LABEL 1069
#define IDC_REQUEST_CODE_LABEL 1070
#define IDC_DATA_LABEL 1073
#define IDC_COMMANDS_GROUP 1074
#define IDC_READER_LOG 1076

#endif
