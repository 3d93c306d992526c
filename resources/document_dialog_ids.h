// Numbers of the document pages' dialogs, their controls and their pictures
// (resources/document_dialogs.rc, resources/pictures.rc). The numbers are fixed: the
// locale library and the driver's configuration know them.
// Plain #defines only, so that resource scripts may include this header too.
#pragma once

// --- dialogs ---
#define IDD_QUORL_ADVANCED               103
#define IDD_CUSTOM_MEDIA_TYPE            105
#define IDD_QUORL_PAGE                   106
#define IDD_LAYOUT_PAGE                  110
#define IDD_PAPER_PAGE                   111
#define IDD_LAYOUT_ADVANCED              112
#define IDD_PAPER_ADVANCED               113
#define IDD_CUSTOM_FORM                  134
#define IDD_TWO_IN_ONE_WARNING           158

#include "picture_ids.h"

// Apply button of the module's own dialogs.
#define ID_APPLY_NOW                     0x3021

// --- "Layout" page (110) ---
#define IDC_COLLATE                      1015
#define IDC_INVERSE                      1016
#define IDC_ORIENTATION_GROUP            1046
#define IDC_OUTPUT_GROUP                 1048
#define IDC_PORTRAIT                     1055
#define IDC_LANDSCAPE                    1056
#define IDC_SINGLE_SIDED                 1057
#define IDC_DOUBLE_SIDED                 1058
#define IDC_FACE_UP                      1059
#define IDC_FACE_DOWN                    1060
#define IDC_OPEN_TO_LEFT                 1061
#define IDC_OPEN_TO_TOP                  1062
#define IDC_ORIENTATION_PICTURE          1066
#define IDC_SIDES_PICTURE                1067
#define IDC_COLLATION_PICTURE            1068
#define IDC_FOLD_LINE_PICTURE            1069
#define IDC_LOGO_PICTURE                 1076
#define IDC_LAYOUT_LIST                  1080
#define IDC_PREVIEW                      1110
#define IDC_MAGAZINE_FOLD_LINE           1111
#define IDC_INSERT_EMPTY_PAGE            2130
#define IDC_ADVANCED                     2147
#define IDC_DEFAULTS                     2148

// --- Layout "Advanced" (112) ---
#define IDC_ROTATED_LANDSCAPE            2140
#define IDC_HORIZONTAL_SHIFT             2144

// --- "Paper/Media" page (111) ---
#define IDC_PAPER_MEDIA_GROUP            1008
#define IDC_PAPER_SOURCE_GROUP           1009
#define IDC_PAPER_SIZE_LABEL             1047
#define IDC_MEDIA_TYPE_LABEL             1048
#define IDC_MEDIA_SURFACE_LABEL          1049
#define IDC_MEDIA_TYPE_LIST              2074
#define IDC_MEDIA_SURFACE_LIST           2075
#define IDC_PAPER_SOURCE_LIST            2076
#define IDC_PAPER_SIZE_LIST              2078

// --- Paper "Advanced" (113); its media combo is IDC_MEDIA_TYPE_LIST ---
#define IDC_FORM_SIZE_TEXT               1070
#define IDC_FORMS_LIST                   1072
#define IDC_METRIC                       1073
#define IDC_ENGLISH                      1074
#define IDC_ADD_MEDIA_TYPE               2075
#define IDC_EDIT_MEDIA_TYPE              2076
#define IDC_REMOVE_MEDIA_TYPE            2077
#define IDC_ADD_CUSTOM_FORM              2079
#define IDC_DELETE_FORM                  2080

// --- custom media type (105) ---
#define IDC_TEST_PATTERN                 1027
#define IDC_MEDIA_NAME                   1101
#define IDC_HIGHEST_DOT                  1102
#define IDC_HIGHEST_DOT_SPIN             1103
#define IDC_LOWEST_DOT                   1104
#define IDC_LOWEST_DOT_SPIN              1105

// --- custom form (134); its unit radio buttons are IDC_METRIC and IDC_ENGLISH ---
#define IDC_FORM_NAME                    1121
#define IDC_FORM_WIDTH                   1122
#define IDC_FORM_HEIGHT                  1123

// --- "Quorl" page (106); "&More Options ..." is IDC_ADVANCED, "&Defaults ..." IDC_DEFAULTS ---
#define IDC_HOW_TO_PRINT_GROUP           1006
#define IDC_EMBOSS_STANDARD_TEXT         1007
#define IDC_GRAPHICS_QUALITY_LABEL       1009
#define IDC_DOT_HEIGHT_LABEL             1010
#define IDC_BRAILLE_STANDARD_LABEL       1011
#define IDC_PRINT_QUALITY_LABEL          1012
#define IDC_BRAILLE_QUALITY_LABEL        1013
#define IDC_GRAYSCALE                    1052
#define IDC_COLOR                        1053
#define IDC_FRONT_INK_ONLY               1055
#define IDC_COLOR_PICTURE                1067
#define IDC_GRAYSCALE_PICTURE            1068
#define IDC_QUORL_ADVANCED_GROUP         1083
#define IDC_MERGE_INK                    1085
#define IDC_DOT_HEIGHT_LIST              2071
#define IDC_BRAILLE_STANDARD_LIST        2072
#define IDC_EMBOSS                       2137
#define IDC_PRINT                        2138
#define IDC_TWO_IN_ONE                   2143
#define IDC_PRINT_QUALITY_LIST           2144
#define IDC_GRAPHICS_QUALITY_LIST        2149
#define IDC_BRAILLE_QUALITY_LIST         2150

// --- Quorl "Advanced" (103); its buttons are IDOK, IDCANCEL and IDC_QUORL_APPLY ---
#define IDC_QUORL_APPLY                  3
#define IDC_IMAGES_GROUP                 1014
#define IDC_CONTRAST                     1017
#define IDC_CONTRAST_NUMBER              1018
#define IDC_BRIGHTNESS                   1021
#define IDC_BRIGHTNESS_NUMBER            1022
#define IDC_INVERT_COLORS                1023
#define IDC_CHESSBOARD_PATTERN           1024
#define IDC_THIN_LINE_INTENSITY          1025
#define IDC_APPLY_PATTERNS               1026
#define IDC_PATTERN_LIST                 1082
#define IDC_OUTPUT_BITMAP                2139

// --- the "2 In 1" warning (158): "&OK" IDOK, "&Yes" IDCANCEL (so Escape answers yes), "&No" ---
#define IDC_WARNING_NO                   3
#define IDC_WARNING_TEXT                 1081
#define IDC_DONT_SHOW_AGAIN              1082
