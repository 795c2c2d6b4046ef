// What a resource script includes: the styles of windows and controls.
#include "win32/styles.h"

#ifndef IDC_STATIC
#define IDC_STATIC (-1)
#endif
