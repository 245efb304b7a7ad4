#include "STRINGOPS.h"

namespace addons {

std::string STRINGOPS::RemoveText(const std::string &source, const std::string &piece)
{
    if (piece.empty())
        return source;
    const size_t at = source.find(piece);
    if (at == std::string::npos)
        return source;
    std::string out = source;
    out.erase(at, piece.size());
    return out;
}

} // namespace addons
