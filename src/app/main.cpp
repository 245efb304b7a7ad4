#include <QApplication>
#include <QDir>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/Components.h"
#include "platform/audio/RealPlayerComponents.h"
#include "platform/cdrom/CdReaderComponent.h"
#include "platform/media/RealMediaComponents.h"
#include "platform/writer/CdWriterEngine.h"
#include "platform/settings/FileSettingsStore.h"
#include "platform/system/ProcSystemInfo.h"
#include "platform/system/XdgShell.h"
#include "burn/BurnWindows.h"
#include "convert/ConvertWindows.h"
#include "extract/ExtractWindows.h"
#include "cover/CoverWindows.h"
#include "platform/imaging/GmImageControl.h"
#include "platform/printer/QtCoverPrinter.h"
#include "platform/scanner/SaneScanner.h"
#include "ui/qt/QtImageClipboard.h"
#include "addons/AddonWindows.h"
#include "platform/http/CurlHttpDownload.h"
#include "platform/media/WaveChecksums.h"
#include "platform/media/WaveNormalizer.h"
#include "playback/PlaybackWindows.h"
#include "layout/LayoutWindows.h"
#include "shell/ShellWindows.h"
#include "ui/AppContext.h"
#include "ui/qt/QtDialogs.h"
#include "ui/qt/QtEventLoop.h"
#include "ui/qt/QtFrontEnd.h"
#include "ui/qt/QtMessageBoxes.h"

namespace {

// The program's folder: BRASSWICK_PROGRAM_DIR when it names a folder (the installed launcher
// sets it, as /usr is not writable), else the executable's folder. Bytes are kept as they are.
std::string programFolder()
{
    if (const char *named = std::getenv("BRASSWICK_PROGRAM_DIR"); named && *named) {
        std::error_code error;
        const std::filesystem::path folder(named);
        if (std::filesystem::is_directory(folder, error)) {
            std::string path = std::filesystem::absolute(folder, error).lexically_normal().string();
            if (!error && !path.empty()) {
                while (path.size() > 1 && path.back() == '/')
                    path.pop_back();
                return path;
            }
        }
    }
    return QDir(QApplication::applicationDirPath()).absolutePath().toStdString();
}

} // namespace

// The program: real components where they exist, Qt for the screen, entry at the splash.
int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName("MP3 Brasswick");
    QApplication::setOrganizationName("Velmora Works");

    platform::Components components;
    components.settingsStore = [] { return std::make_unique<platform::settings::FileSettingsStore>(); };
    components.extractionStore = [] {
        return std::make_unique<platform::settings::FileSettingsStore>(platform::settings::FileSettingsStore::extractionFile());
    };
    components.normalizeFile = [](const std::string &file, int32_t level, const std::function<void(int32_t, int32_t)> &progress) {
        platform::media::normalizeWaveFile(file, level, progress);
    };
    components.checksumWaveFile = [](const std::string &file, bool firstTrack, bool lastTrack) {
        return platform::media::checksumWaveFile(file, firstTrack, lastTrack);
    };
    components.systemInfo = [] { return std::make_unique<platform::system::ProcSystemInfo>(); };
    components.shell = [] { return std::make_unique<platform::system::XdgShell>(); };

    uiqt::QtEventLoop loop;
    // The decoding chains and the writing engine: the system's recorders, then the Image
    // Recorder, whose discs go to the user's music folder.
    platform::media::addRealMediaComponents(components, loop);
    // The player: the sound card, else the silent sink (always the sink, recording what it plays,
    // when BRASSWICK_SOUND_DIR names a folder).
    platform::audio::addRealPlayerComponents(components, loop);
    components.writerEngine = [&loop] {
        return std::make_unique<platform::writer::CdWriterEngine>(loop, platform::writer::Options{});
    };
    // The CD reader: the machine's drives, then the discs the Image Recorder made.
    platform::cdrom::ReaderOptions readerOptions;
    readerOptions.imageFolder = platform::writer::defaultImageFolder();
    platform::cdrom::addRealCdReader(components, loop, readerOptions);
    // The add-on catalogue: HTTPS or HTTP, from the server the settings name (AddonServer).
    components.httpDownload = [&loop] { return std::make_unique<platform::http::CurlHttpDownload>(loop); };
    // The cover designer: pictures through GraphicsMagick and the system clipboard, scans
    // through SANE, covers printed through Qt on the CUPS printers.
    auto clipboard = uiqt::makeQtImageClipboard();
    components.imageClipboard = [clipboard] { return clipboard; };
    components.imageControl = [clipboard] { return platform::imaging::makeGmImageControl(clipboard); };
    components.scanner = [&loop] { return platform::scanner::makeSaneScanner(loop); };
    components.printer = [] { return platform::printer::makeQtCoverPrinter({}); };
    uiqt::QtMessageBoxes boxes;
    uiqt::QtDialogs dialogs;
    // LocalJ/ and the program's other files lie in its folder.
    ui::AppContext app(loop, boxes, dialogs, components, programFolder());
    uiqt::QtFrontEnd frontEnd(app);
    shell::registerShellWindows(app);
    layout::registerLayoutWindows(app);
    burn::registerBurnWindows(app);
    convert::registerConvertWindows(app);
    extract::registerExtractWindows(app);
    cover::registerCoverWindows(app);
    addons::registerAddonWindows(app);
    playback::registerPlaybackWindows(app);

    loop.deliver([&] { shell::startProgram(app); });
    if (app.ended())
        return app.endError();
    return QApplication::exec();
}
