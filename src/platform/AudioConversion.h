#pragma once

namespace platform {

// The decoding and conversion chain used by the burn, the converters and extraction:
// trigger, wave file, helpers, format converter (`MMTriggerX`, `MMWaveFileX`, `MMHelperX`,
// `MMACMX`, `MMACMConverterX`, `MMWaveHelperX`, `MMWaveOpenDialogX`). Their members arrive with
// track preparation.
class Trigger {
public:
    virtual ~Trigger() = default;
};

class WaveFile {
public:
    virtual ~WaveFile() = default;
};

} // namespace platform
