#pragma once

namespace platform {

// The CD reader (`MMCDReaderX`): drives, tables of contents, track copy, ISRC. Its members
// arrive with the extraction windows.
class CdReader {
public:
    virtual ~CdReader() = default;
};

} // namespace platform
