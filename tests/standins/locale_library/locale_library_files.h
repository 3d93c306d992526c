// The locale-library stand-in answers from a fixed table (Strings and Caption sections,
// locales en_us and de_de) and makes no instance when the locale folder handed to Create
// does not exist. It appends one line per call to requests.log in that folder:
//   Create <folder>|<section>, InitLocale <name>, Dispose
#pragma once

#define OZDK_LOCALE_REQUESTS_FILE L"requests.log"
