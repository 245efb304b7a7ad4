// CPU time of a whole 12-track burn to the Image Recorder, from Start to the finish box, played
// through the windows by the scenario driver on real components, against the floor of decoding
// the same files (mpg123 -t). Prints the ratio of one run.
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "Mp3Maker.h"
#include "Runner.h"

namespace fs = std::filesystem;

namespace {

double cpuSeconds(int who, bool systemOnly = false)
{
    rusage u{};
    getrusage(who, &u);
    const double sys = u.ru_stime.tv_sec + u.ru_stime.tv_usec / 1e6;
    return systemOnly ? sys : u.ru_utime.tv_sec + u.ru_utime.tv_usec / 1e6 + sys;
}

} // namespace

int main(int argc, char **argv)
{
    const int tracks = 12;
    const double seconds = argc > 1 ? std::atof(argv[1]) : 180.0;
    const fs::path scratch = fs::temp_directory_path() / "bench-burn-image";
    fs::remove_all(scratch);
    fs::create_directories(scratch / "mp3");
    std::cerr << "encoding " << tracks << " MP3s of " << seconds << " s...\n";
    for (int i = 0; i < tracks; ++i) {
        testsupport::Mp3Options o;
        o.seconds = seconds;
        o.kbps = 192;
        char name[32];
        std::snprintf(name, sizeof name, "track%02d.mp3", i + 1);
        if (!testsupport::makeMp3((scratch / "mp3" / name).string(), o)) {
            std::cerr << "the encoder failed\n";
            return 1;
        }
    }

    // The floor: decoding the same files and nothing else.
    const double childBefore = cpuSeconds(RUSAGE_CHILDREN);
    if (std::system(("mpg123 -q -t " + (scratch / "mp3").string() + "/*.mp3").c_str()) != 0) {
        std::cerr << "mpg123 failed\n";
        return 1;
    }
    const double floor = cpuSeconds(RUSAGE_CHILDREN) - childBefore;

    std::ostringstream scn;
    scn << "use real decoder\nuse real writer\n";
    for (int i = 0; i < tracks; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "track%02d.mp3", i + 1);
        scn << "file \"$WORK/music/" << name << "\" copy \"mp3/" << name << "\"\n";
    }
    scn << "start\nwait 7000\ntoolbar frmMain.ctToolBar1 1\nclick Form2.Check1\nclick Form2.ctButton1\n"
        << "dialog \"$WORK/music\"\nclick Form5.ctButton3\n";
    for (int i = 0; i < tracks; ++i)
        scn << "select Form5.ctList1 " << i << " on\n";
    scn << "click Form5.ctButton1\nclick Form5.ctButton4\nanswer Yes\n";
    const std::string setup = scn.str();
    std::ofstream(scratch / "setup.scn") << setup << "expect frmMain.mainlist.ListCount == \"" << tracks << "\"\n";
    std::ofstream(scratch / "burn.scn") << setup << "click frmMain.ctButton13\nsettle 900000\n"
                                        << "expect-box \"You are about to burn a CD without closing your session!  A normal CD "
                                           "Player will not be able to read the data until your session is closed.  Would you "
                                           "like to continue?\"\n"
                                        << "expect-box \"Velmora Works has finished your CD\"\n";

    std::ostringstream out;
    scenario::Runner runner(BRASSWICK_PROGRAM_DIR, out);
    // The same steps without the burn, to take the start and the layout out of the figure.
    double before = cpuSeconds(RUSAGE_SELF);
    runner.runFile(scratch / "setup.scn");
    const double setupCpu = cpuSeconds(RUSAGE_SELF) - before;
    before = cpuSeconds(RUSAGE_SELF);
    const double sysBefore = cpuSeconds(RUSAGE_SELF, true);
    runner.runFile(scratch / "burn.scn");
    const double burnCpu = cpuSeconds(RUSAGE_SELF) - before - setupCpu;
    const double burnSys = cpuSeconds(RUSAGE_SELF, true) - sysBefore;
    fs::remove_all(scratch);
    if (runner.failed() != 0) {
        std::cerr << out.str();
        return 1;
    }
    std::cout << tracks << " tracks of " << seconds << " s: burn " << burnCpu << " s CPU (Start to finish; " << burnSys << " s of it in the kernel), decoding floor "
              << floor << " s CPU, ratio " << burnCpu / floor << "\n";
    return 0;
}
