#include "ISRC.h"

#include "runtime/RuntimeError.h"

namespace extract {

std::string &ISRC::code(int index)
{
    if (index < 0 || index >= Size)
        rt::raise(rt::ErrSubscript);
    return ISRCCodes[static_cast<size_t>(index)];
}

void ISRC::clear()
{
    for (auto &c : ISRCCodes)
        c.clear();
}

} // namespace extract
