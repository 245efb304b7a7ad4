#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// Background HTTP download to a file (`ickHTTP`). The transfer runs on its own and reports by
// events posted to the loop; the destination is replaced only by a complete transfer.
class HttpDownload {
public:
    virtual ~HttpDownload() = default;

    // The address to fetch.
    virtual void setURL(const std::string &url) = 0;
    virtual std::string URL() const = 0;
    // The file the transfer ends in, as the logic builds its path.
    virtual void setDestFile(const std::string &path) = 0;
    virtual std::string DestFile() const = 0;
    // 1 starts a transfer of URL into DestFile; 0 cancels the one in hand. Other values do nothing.
    virtual void setAction(int32_t action) = 0;
    virtual int32_t Action() const = 0;
    // Stops the transfer in hand, if any: no more events come, and DestFile stays as it was.
    virtual void Cancel() = 0;

    // The query has been started.
    std::function<void()> OnConnect;
    // A status report: a code and a text, to be shown as they are.
    std::function<void(int32_t code, const std::string &text)> OnStatus;
    // The destination file is complete.
    std::function<void()> OnEndTransfer;
    // Bytes so far and the whole size (0 while unknown).
    std::function<void(int32_t done, int32_t total)> OnProgress;
};

// The string helper (`STRINGOPS`).
class StringOps {
public:
    virtual ~StringOps() = default;
    // The source without the first occurrence of the piece (case counts); the source as it is
    // when the piece isn't in it or is empty.
    virtual std::string RemoveText(const std::string &source, const std::string &piece) = 0;
};

} // namespace platform
