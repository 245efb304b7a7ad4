#include "EqualizerComponent.h"

#include "EqIniFile.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

namespace platform::audio {

void EqualizerComponent::LoadFromIni(const std::string &file, const std::string &section)
{
    if (const auto gains = readEqGains(rt::nativePath(file), section))
        m_engine->setGains(*gains);
}

void EqualizerComponent::SaveToIni(const std::string &file, const std::string &section)
{
    if (file.empty() || !writeEqGains(rt::nativePath(file), section, m_engine->gains()))
        rt::raise(rt::ErrPathFileAccess);
}

} // namespace platform::audio
