// Bringing the embosser's stored settings into the UIConfig before the device-settings
// tree or the Service page shows them.
#pragma once

#include "config/ui_config.h"

class CancelSignal;

// Fetches the embosser's settings into the legacy-settings fields of `config`, through
// the network when the printer's port is a Standard TCP/IP port (a silent device then
// gives false: the spooler-side path is not tried), else through the spooler-side
// component and the printer data it stores. True when the settings are known:
// LegacyParmCount above 0 and, on the spooler-side path, at least one stored value read.
// Uses config.PrinterHandle; blocks the calling thread while the device answers, or
// until `cancel` is raised (the read then fails).
bool GetQuorlSettings(UIConfig& config, const CancelSignal* cancel = nullptr);

// True until a page has tried to read the device (LegacyParmCount 0).
inline bool IsDeviceReadPending(const UIConfig& config) { return config.LegacyParmCount == 0; }

// The first read of the device by a page (`caller` names the page's routine in the
// trace): when `config` has not been read yet (LegacyParmCount 0), reads it; success asks
// the pages to refresh from the device's values (LegacyRefresh), failure marks the device
// unreachable (LegacyParmCount -1) so that no page tries again. Nothing when the device
// was read before.
void ReadQuorlSettingsOnce(UIConfig& config, const wchar_t* caller);

// What follows a first read that is over, `read` telling whether the settings are known:
// the trace line, then LegacyRefresh or LegacyParmCount -1 as ReadQuorlSettingsOnce sets them.
void RecordDeviceRead(UIConfig& config, bool read, const wchar_t* caller);

// Everything of `read` that a read of the device sets (the embosser's settings, its
// identity, the count of items and the state words) copied into `config`.
void TakeDeviceSettings(UIConfig& config, const UIConfig& read);
