#pragma once

namespace platform {

// Background HTTP download to a file (`ickHTTP`). Its members arrive with the add-on catalogue.
class HttpDownload {
public:
    virtual ~HttpDownload() = default;
};

// The string helper (`STRINGOPS`, `RemoveText`). Its members arrive with the add-on catalogue.
class StringOps {
public:
    virtual ~StringOps() = default;
};

} // namespace platform
