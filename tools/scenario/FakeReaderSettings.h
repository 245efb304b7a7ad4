#pragma once

#include <string>
#include <vector>

#include "Tokenizer.h"

namespace platform::fake {
struct FakeWorld;
}

namespace scenario {

// `fake reader SETTING VALUE...` (the tokens from SETTING on): sets the fake CD reader's drives
// and disc. False with a message when the setting is unknown or its values don't fit.
bool setFakeReader(platform::fake::FakeWorld &world, const std::vector<Token> &t, std::string &error);

} // namespace scenario
