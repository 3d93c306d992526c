// Numbers of the printer pages' dialogs and their controls (resources/device_dialogs.rc).
// The numbers are fixed: the locale library and the driver's configuration know them.
// Plain #defines only, so that resource scripts may include this header too.
#pragma once

#include "picture_ids.h"

// --- dialogs ---
#define IDD_DEVICE_SERVICE               108
#define IDD_READING_NOTICE               160

// --- "Service" page (108) ---
#define IDC_PRINTER_STATUS               1037
#define IDC_EMBOSS_USAGE                 1055
#define IDC_OPEN_PRINTER_EXTENSION       1060
#define IDC_PRINT_TEST_PAGE              1063
#define IDC_ENABLE_STATUS_MONITORING     1071
#define IDC_SERVICE_PICTURE              1076
#define IDC_SERIAL_SETTINGS              1081

// --- the notice shown while the embosser is read (160) ---
#define IDC_READING_TEXT                 1301
