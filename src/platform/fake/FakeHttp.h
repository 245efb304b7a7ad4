#pragma once

#include <memory>
#include <string>

#include "platform/Http.h"

namespace platform::fake {

struct FakeWorld;

// How the fake add-on server answers, on the loop's virtual time.
struct FakeHttpSettings {
    // The file served for every address; none, or a missing file, answers 404.
    std::string servePath;
    // Virtual milliseconds from the start of a transfer to its end.
    int transferMs = 500;
    // The status reported with a served file.
    int statusCode = 200;
    std::string statusText = " OK";
    // A transfer that fails after transferMs with this status, and no end.
    bool fails = false;
    int failCode = -7;
    std::string failText = " Couldn't connect to server";
    // A server that takes the connection and never answers: the start, then nothing.
    bool silent = false;
    // A transfer that reports its end and leaves no file.
    bool endsWithoutFile = false;
    // Transfers started, and those cancelled while running.
    int started = 0;
    int cancelled = 0;
};

std::unique_ptr<HttpDownload> makeFakeHttp(std::shared_ptr<FakeWorld> world);

} // namespace platform::fake
