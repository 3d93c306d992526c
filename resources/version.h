// The module's version, shown on the Service page when the driver reports none.
#pragma once

#define OZDK_VERSION_MAJOR 1
#define OZDK_VERSION_MINOR 4
#define OZDK_VERSION_BUILD 7
#define OZDK_VERSION_REVISION 0
#define OZDK_VERSION_TEXT "1.4.7.0"
