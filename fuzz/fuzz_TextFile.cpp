// Text files as the program reads them (drivers.cdx: a count line, then names; comma fields):
// any bytes, read line by line and field by field, must end in values or run-time errors only.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <unistd.h>

#include "ScratchFolder.h"
#include "runtime/Conversions.h"
#include "runtime/ResumeNext.h"
#include "runtime/TextFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string path = (fuzzing::scratchFolder() / "drivers.cdx").string();
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    }
    // As the main window reads the model list: a count, then that many lines, each failure passed over.
    {
        rt::ResumeNext step;
        rt::TextFile file;
        rt::Integer count = 0;
        step([&] { file.open(path, rt::TextFile::Mode::Input); });
        step([&] { count = rt::CInt(file.lineInput()); });
        const int rows = count.value() > 200 ? 200 : count.value();
        for (int i = 1; i <= rows; ++i)
            step([&] { (void)file.lineInput(); });
        step([&] { file.close(); });
    }
    // Field by field to the end.
    {
        rt::ResumeNext step;
        rt::TextFile file;
        step([&] { file.open(path, rt::TextFile::Mode::Input); });
        for (int i = 0; i < 10000 && file.isOpen() && !file.eof(); ++i)
            step([&] { (void)file.inputField(); });
    }
    return 0;
}
