// The add-on catalogue as the wait window reads it: any bytes, field by field, each field sorted
// into a row or the directives it serves. Only values or run-time errors may come out.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <unistd.h>

#include "ScratchFolder.h"
#include "addons/Catalogue.h"
#include "addons/STRINGOPS.h"
#include "runtime/RuntimeError.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string path = (fuzzing::scratchFolder() / "data.dat").string();
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    }
    addons::STRINGOPS strings;
    try {
        addons::readCatalogueLines(path, [&](const std::string &line) {
            const addons::CatalogueLine meaning = addons::classifyCatalogueLine(line, strings);
            // A row is never a directive, and what a directive keeps is never longer than its line.
            if (meaning.isRow && (meaning.downloadAddress || meaning.infoAddress || meaning.fileSize))
                __builtin_trap();
            if (meaning.downloadAddress && meaning.downloadAddress->size() > line.size())
                __builtin_trap();
        });
    } catch (const rt::RuntimeError &) {
    }
    return 0;
}
