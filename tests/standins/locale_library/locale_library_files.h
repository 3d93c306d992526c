// The files through which a test drives the locale-library stand-in. Both live in the
// locale folder that the plug-in hands to Create.
//
// locale.ini (UTF-16 with byte-order mark, or plain ASCII):
//   [Locales] List=en_us,de_de      what EnumLocales reports; InitLocale accepts these
//   [Strings] <text>=<translation>  GetString; a translation "@key" returns the key itself
//   [<section>] <text>=<translation> GetSectionString, e.g. [Caption]
// Without locale.ini, Create fails (returns null).
//
// requests.log (UTF-8, one line per call, appended):
//   Create <folder>|<section>, CreateEx <folder>|<section>|<locale>, EnumLocales,
//   InitLocale <name>, Dispose, TranslateDialog, TranslateMenu
#pragma once

#define OZDK_LOCALE_TABLE_FILE L"locale.ini"
#define OZDK_LOCALE_REQUESTS_FILE L"requests.log"
