// Numbers of the pictures of the pages (resources/pictures.rc). The numbers are fixed:
// the locale library and the driver's configuration know them.
// Plain #defines only, so that resource scripts may include this header too.
#pragma once

#define IDB_PORTRAIT                     116
#define IDB_LANDSCAPE                    117
#define IDB_LANDSCAPE_INVERSE            118
#define IDB_SINGLE_SIDED                 119
#define IDB_DOUBLE_SIDED                 120
#define IDB_DOUBLE_SIDED_EMPTY_PAGE      121
#define IDB_COLLATED                     122
#define IDB_UNCOLLATED                   123
#define IDI_COLOR_INK                    124
#define IDI_GRAYSCALE_INK                126
#define IDB_FOLD_LINE                    135
#define IDB_NO_FOLD_LINE                 136
#define IDB_LOGO                         157

// The transparent colour of every picture: RGB(0, 255, 255).
#define PICTURE_TRANSPARENT_COLOR        0xFFFF00

