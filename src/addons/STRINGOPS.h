#pragma once

#include <string>

#include "platform/Http.h"

namespace addons {

// The string helper the add-on window keeps: pure text work, the same in tests and in use.
class STRINGOPS : public platform::StringOps {
public:
    std::string RemoveText(const std::string &source, const std::string &piece) override;
};

} // namespace addons
