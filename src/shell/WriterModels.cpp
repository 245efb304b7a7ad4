#include "WriterModels.h"

namespace shell {

const std::vector<WriterModel> &writerModels()
{
    // The spellings are the engine's own, "PCD255" in the KODAK row included; there is no type 11.
    static const std::vector<WriterModel> models = {
        {"JVC XR_W2010", 1}, {"JVC XR_W2001", 1}, {"JVC R2626", 1}, {"PINNACLE RCD5020", 1},
        {"PINNACLE RCD5040", 1}, {"PINNACLE RCD4X4", 1}, {"SAF CD-R2006PLUS", 1}, {"SAF CD-RW226", 1},
        {"SAF CD-R4012", 1}, {"TEAC CD-R50S", 1}, {"TEAC CD-R55S", 1}, {"YAMAHA CDR100", 1},
        {"YAMAHA CDR102", 2}, {"PHILIPS CDD521/00", 2},
        {"IMS CDD521/00", 3}, {"KODAK CDD521/00", 3}, {"HP CDD521/00", 3},
        {"Older PHILIPS type", 4},
        {"PHILIPS CDD521", 5}, {"T.YUDEN CD-WO EW-50", 5},
        {"PHILIPS CDD522", 6}, {"PHILIPS PCD225", 6}, {"PHILIPS KHSW/OB", 6}, {"PHILIPS CDD20", 6},
        {"PHILIPS CDD26", 6}, {"PHILIPS C4324/C4325", 6}, {"PHILIPS CD-WRITER 6020", 6}, {"IMS CDD522", 6},
        {"IMS PCD225", 6}, {"IMS KHSW/OB", 6}, {"IMS CDD20", 6}, {"IMS CDD26", 6}, {"IMS C4324/C4325", 6},
        {"IMS CD-WRITER 6020", 6}, {"KODAK CDD522", 6}, {"KODAK PCD255", 6}, {"KODAK KHSW/OB", 6},
        {"KODAK CDD20", 6}, {"KODAK CDD26", 6}, {"KODAK C4324/C4325", 6}, {"KODAK CD-WRITER 6020", 6},
        {"HP CDD522", 6}, {"HP PCD225", 6}, {"HP KHSW/OB", 6}, {"HP CDD20", 6}, {"HP CDD26", 6},
        {"HP C4324/C4325", 6}, {"HP CD-WRITER 6020", 6}, {"PLASMON CDR4220", 6}, {"WPI CDR-632P", 6},
        {"PLASMON RF4100", 7},
        {"PLEXTOR CDR", 8}, {"PX-R24CS", 8}, {"RICOH RO-1420C", 8},
        {"PIONEER CD-WO DW-S114X", 9},
        {"All mmc compatible drives", 10},
        {"SAF CD-R2004", 12}, {"SAF CD-R2006", 12}, {"SONY CD-R CDU92", 12}, {"SONY CD-R CDU94", 12}, {"CDS615E", 12},
    };
    return models;
}

std::optional<int> driverTypeOfModel(std::string_view name)
{
    for (const auto &model : writerModels()) {
        if (model.name == name)
            return model.driverType;
    }
    return std::nullopt;
}

} // namespace shell
