#include "DriverTypes.h"

#include <array>

namespace platform::writer {

std::string wodimDriverName(int driverType)
{
    // Index = driver type. The names are those `wodim driver=help` lists; where a group of the
    // model table mixes drives, the driver wodim itself picks for most of the group wins.
    static const std::array<const char *, 13> names = {
        nullptr,
        "teac_cdr50",         // 1: JVC XR-W2010, Pinnacle RCD-5020, TEAC CD-R50S/55S, SAF, Yamaha CDR100
        "yamaha_cdr100",      // 2: Yamaha CDR102 (the driver covers CDR-100/102), Philips CDD521/00
        "philips_cdd521_old", // 3: IMS/Kodak/HP CDD521/00, identified by wodim as the old CDD-521
        "philips_dumb",       // 4: older Philips: the CDD-521 driver with pessimistic assumptions
        "philips_cdd521",     // 5: Philips CDD521, Taiyo Yuden EW-50 (same command set)
        "philips_cdd522",     // 6: the CDD522 family (PCD225, CDD20, CDD26, 6020, Plasmon CDR4220 ...)
        "plasmon_rf4100",     // 7: Plasmon RF4100
        "ricoh_ro1420c",      // 8: Plextor CDR, PX-R24CS, Ricoh RO-1420C
        "pioneer_dws114x",    // 9: Pioneer DW-S114X
        "mmc_cdr",            // 10: all MMC compatible drives
        "mmc_cdr",            // 11: no models; a type set by hand is taken as MMC
        "sony_cdu924",        // 12: SAF CD-R2004/2006, Sony CDU92x/94x, CDS615E
    };
    if (driverType < 1 || driverType >= static_cast<int>(names.size()))
        return {};
    return names[static_cast<size_t>(driverType)];
}

} // namespace platform::writer
