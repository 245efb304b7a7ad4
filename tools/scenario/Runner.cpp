#include "Runner.h"

#include "FakeReaderSettings.h"

#include <chrono>
#include <csignal>
#include <sys/mount.h>
#include <fstream>
#include <set>
#include <thread>
#include <random>
#include <sstream>

#include "Mp3Maker.h"
#include "SaneTestBackend.h"
#include "WaveMaker.h"
#include "platform/audio/RealPlayerComponents.h"
#include "platform/cdrom/CdReaderComponent.h"
#include "platform/media/RealMediaComponents.h"
#include "platform/media/WaveChecksums.h"
#include "platform/media/WaveNormalizer.h"
#include "platform/writer/CdWriterEngine.h"
#include "platform/settings/FileSettingsStore.h"
#include "platform/system/ProcSystemInfo.h"
#include "platform/system/XdgShell.h"
#include "runtime/RuntimeError.h"
#include "runtime/Paths.h"
#include "runtime/Strings.h"
#include "burn/BurnWindows.h"
#include "convert/ConvertWindows.h"
#include "extract/ExtractWindows.h"
#include "cover/CoverWindows.h"
#include "platform/fake/FakeImaging.h"
#include "platform/imaging/GmImageControl.h"
#include "platform/printer/QtCoverPrinter.h"
#include "platform/scanner/SaneScanner.h"
#include "addons/AddonWindows.h"
#include "platform/http/CurlHttpDownload.h"
#include "playback/PlaybackWindows.h"
#include "layout/LayoutWindows.h"
#include "shell/ShellWindows.h"
#include "ui/ComboBox.h"
#include "ui/ListBox.h"
#include "ui/MenuItem.h"
#include "ui/Meter.h"
#include "ui/TextBox.h"
#include "ui/ToolBar.h"
#include "ui/TreeView.h"

namespace fs = std::filesystem;

namespace scenario {

namespace {

int toInt(const std::string &text)
{
    try {
        size_t used = 0;
        const int v = std::stoi(text, &used);
        if (used == text.size())
            return v;
    } catch (...) {
    }
    throw std::invalid_argument("not a number: " + text);
}

std::string readWhole(const fs::path &p)
{
    std::ifstream in(p, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::vector<std::string> splitCrLf(const std::string &text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        const size_t end = text.find("\r\n", start);
        if (end == std::string::npos) {
            lines.push_back(text.substr(start));
            break;
        }
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

const char *iconName(int icon)
{
    switch (icon) {
    case ui::vbCritical: return "critical";
    case ui::vbQuestion: return "question";
    case ui::vbExclamation: return "exclamation";
    case ui::vbInformation: return "information";
    default: return "none";
    }
}

const char *buttonsName(int buttons)
{
    switch (buttons) {
    case ui::vbOKOnly: return "ok";
    case ui::vbOKCancel: return "okcancel";
    case ui::vbAbortRetryIgnore: return "abortretryignore";
    case ui::vbYesNoCancel: return "yesnocancel";
    case ui::vbYesNo: return "yesno";
    case ui::vbRetryCancel: return "retrycancel";
    default: return "?";
    }
}

} // namespace

Runner::Runner(fs::path installation, std::ostream &out)
    : m_installation(std::move(installation))
    , m_out(out)
{
}

Runner::~Runner()
{
    teardown();
}

void Runner::teardown()
{
    m_objects.clear();
    m_app.reset();
    m_server.reset();
    m_loop.reset();
    m_boxes.reset();
    m_dialogs.reset();
    m_components.reset();
    m_world.reset();
    releaseSmallFolders();
    if (!m_work.empty() && m_keep) {
        m_out << "kept: " << m_work.string() << "\n";
        m_work.clear();
    }
    if (!m_work.empty()) {
        std::error_code ec;
        fs::permissions(m_work, fs::perms::owner_all, fs::perm_options::add, ec);
        for (auto it = fs::recursive_directory_iterator(m_work, ec); it != fs::recursive_directory_iterator(); it.increment(ec))
            fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
        fs::remove_all(m_work, ec);
        m_work.clear();
    }
}

void Runner::reset(const fs::path &file)
{
    teardown();
    m_scenarioDir = fs::absolute(file).parent_path();
    std::random_device rd;
    m_work = fs::temp_directory_path() / ("scenario-" + std::to_string(rd()) + "-" + file.stem().string());
    fs::create_directories(m_work);
    m_prog = m_work / "prog";
    fs::create_directories(m_prog);
    std::error_code ec;
    fs::copy(m_installation, m_prog, fs::copy_options::recursive, ec);
    m_useReal.clear();
    m_world = std::make_shared<platform::fake::FakeWorld>();
    m_loop = std::make_unique<rt::VirtualEventLoop>();
    m_boxes = std::make_unique<ui::ScriptedMessageBoxes>();
    m_dialogs = std::make_unique<ui::ScriptedDialogs>();
    m_boxesChecked = 0;
    m_lastResult.clear();
    m_lastFile.clear();
}

void Runner::runFile(const fs::path &file)
{
    std::ifstream in(file);
    if (!in) {
        m_out << "FAIL " << file.string() << ": cannot read the file\n";
        ++m_failed;
        return;
    }
    m_out << "# " << file.string() << "\n";
    reset(file);
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#')
            continue;
        runLine(line.substr(first));
    }
    teardown();
}

void Runner::runLine(const std::string &line)
{
    std::string error;
    auto tokens = tokenize(line, error);
    try {
        if (!tokens)
            fail(error);
        if (tokens->empty())
            return;
        const std::string &verb = (*tokens)[0].text;
        if (verb == "expect")
            cmdExpect(*tokens, line);
        else if (verb == "expect-lines")
            cmdExpectLines(*tokens, line);
        else if (verb == "expect-box")
            cmdExpectBox(*tokens, line);
        else if (verb == "expect-box-lines")
            cmdExpectBoxLines(*tokens, line);
        else if (verb == "expect-no-box")
            cmdExpectNoBox(line);
        else if (verb == "expect-file")
            cmdExpectFile(*tokens, line);
        else if (verb == "expect-loaded" || verb == "expect-unloaded" || verb == "expect-visible" || verb == "expect-hidden")
            cmdExpectWindow(verb, *tokens, line);
        else if (verb == "expect-ended")
            cmdExpectEnded(line);
        else if (verb == "expect-error")
            cmdExpectError(*tokens, line);
        else
            dispatch(*tokens);
    } catch (const Failure &f) {
        ++m_failed;
        m_out << "FAIL " << line << ": " << f.message << "\n";
    } catch (const rt::RuntimeError &e) {
        ++m_failed;
        m_out << "FAIL " << line << ": run-time error " << e.number() << " (" << e.description() << ")\n";
    } catch (const std::exception &e) {
        ++m_failed;
        m_out << "FAIL " << line << ": " << e.what() << "\n";
    }
}

void Runner::dispatch(const Tokens &t)
{
    const std::string &verb = t[0].text;
    if (verb == "prog") {
        if (t.size() != 2)
            fail("prog takes one path");
        if (m_app)
            fail("prog must come before start");
        m_prog = hostPath(t[1].text);
    } else if (verb == "file" || verb == "line") {
        cmdFile(t);
    } else if (verb == "folder") {
        if (t.size() == 4 && t[2].text == "holds")
            cmdSmallFolder(t);
        else if (t.size() != 2)
            fail("folder takes one path, or a path, holds and a size in bytes");
        else
            fs::create_directories(hostPath(t[1].text));
    } else if (verb == "registry") {
        cmdRegistry(t);
    } else if (verb == "use") {
        cmdUse(t);
    } else if (verb == "fake") {
        cmdFake(t);
    } else if (verb == "start") {
        cmdStart();
    } else if (verb == "wait") {
        if (t.size() != 2)
            fail("wait takes a number of milliseconds");
        requireRunning();
        m_loop->wait(toInt(t[1].text));
        m_app->afterEvent();
    } else if (verb == "settle") {
        cmdSettle(t);
    } else if (verb == "serve") {
        cmdServe(t);
    } else if (verb == "click" || verb == "dblclick") {
        cmdClick(t, verb == "dblclick");
    } else if (verb == "select") {
        cmdSelect(t);
    } else if (verb == "toolbar") {
        cmdToolbar(t);
    } else if (verb == "menu") {
        cmdMenu(t);
    } else if (verb == "type") {
        cmdType(t);
    } else if (verb == "pick") {
        cmdPick(t);
    } else if (verb == "slide") {
        cmdSlide(t);
    } else if (verb == "mouse") {
        cmdMouse(t);
    } else if (verb == "close") {
        cmdClose(t);
    } else if (verb == "call") {
        cmdCall(t);
    } else if (verb == "new") {
        cmdNew(t);
    } else if (verb == "set") {
        cmdSet(t);
    } else if (verb == "answer") {
        cmdAnswer(t);
    } else if (verb == "dialog") {
        cmdDialog(t);
    } else if (verb == "dump") {
        cmdDump(t);
    } else {
        fail("unknown command \"" + verb + "\"");
    }
}

// ---- the world ----

std::string Runner::expand(const std::string &text) const
{
    std::string out = text;
    const std::string server = m_server ? m_server->address() : std::string("$SERVER");
    for (const auto &[name, value] : {std::pair<std::string, std::string>{"$WORK", m_work.string()}, {"$PROG", m_prog.string()}, {"$SERVER", server}}) {
        size_t at = 0;
        while ((at = out.find(name, at)) != std::string::npos) {
            out.replace(at, name.size(), value);
            at += value.size();
        }
    }
    return out;
}

fs::path Runner::hostPath(const std::string &text) const
{
    return rt::nativePath(expand(text));
}

void Runner::cmdFile(const Tokens &t)
{
    if (t[0].text == "line") {
        if (t.size() != 2 || !t[1].quoted)
            fail("line takes one text");
        if (m_lastFile.empty())
            fail("line comes after a file");
        std::ofstream out(m_lastFile, std::ios::binary | std::ios::app);
        out << rt::toAnsi(expand(t[1].text)) << "\r\n";
        return;
    }
    if (t.size() < 3)
        fail("file takes a path and a kind: text, bytes, copy or mp3");
    const fs::path path = hostPath(t[1].text);
    fs::create_directories(path.parent_path());
    const std::string &kind = t[2].text;
    if (kind == "text") {
        if (t.size() != 4)
            fail("file ... text takes one text");
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << rt::toAnsi(expand(t[3].text)) << "\r\n";
    } else if (kind == "bytes") {
        std::string bytes;
        for (size_t i = 3; i < t.size(); ++i) {
            if (t[i].text == "x") {
                if (i + 1 >= t.size() || bytes.empty())
                    fail("x N repeats the byte before it");
                const int n = toInt(t[++i].text);
                bytes.append(static_cast<size_t>(std::max(0, n - 1)), bytes.back());
                continue;
            }
            if (t[i].text.size() != 2)
                fail("a byte is two hex digits: " + t[i].text);
            bytes += static_cast<char>(std::stoi(t[i].text, nullptr, 16));
        }
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << bytes;
    } else if (kind == "copy") {
        if (t.size() != 4)
            fail("file ... copy takes one source");
        fs::copy_file(m_scenarioDir / t[3].text, path, fs::copy_options::overwrite_existing);
    } else if (kind == "mp3") {
        if (t.size() < 6)
            fail("file ... mp3 takes RATE KBPS SECONDS");
        testsupport::Mp3Options o;
        o.sampleRate = toInt(t[3].text);
        o.kbps = toInt(t[4].text);
        o.seconds = std::stod(t[5].text);
        for (size_t i = 6; i < t.size(); ++i) {
            if (t[i].text == "mono")
                o.channels = 1;
            else if (t[i].text == "stereo")
                o.channels = 2;
            else if (t[i].text == "vbr")
                o.vbr = true;
            else if (t[i].text == "id3v1" && i + 1 < t.size())
                o.id3v1Title = t[++i].text;
            else if (t[i].text == "id3v2" && i + 1 < t.size())
                o.id3v2Bytes = toInt(t[++i].text);
            else
                fail("unknown mp3 option \"" + t[i].text + "\"");
        }
        if (!testsupport::makeMp3(path.string(), o))
            fail("the encoder refused these settings");
    } else if (kind == "wave") {
        if (t.size() < 5)
            fail("file ... wave takes RATE SECONDS");
        testsupport::WaveOptions o;
        o.sampleRate = toInt(t[3].text);
        o.seconds = std::stod(t[4].text);
        for (size_t i = 5; i < t.size(); ++i) {
            if (t[i].text == "mono")
                o.channels = 1;
            else if (t[i].text == "stereo")
                o.channels = 2;
            else if (t[i].text == "8" || t[i].text == "16" || t[i].text == "24" || t[i].text == "32")
                o.bits = toInt(t[i].text);
            else
                fail("unknown wave option \"" + t[i].text + "\"");
        }
        if (!testsupport::makeWave(path.string(), o))
            fail("the wave file could not be written");
    } else {
        fail("unknown file kind \"" + kind + "\"");
    }
    m_lastFile = path;
}

// A folder whose disk is full after a number of bytes: a small tmpfs mounted there where the
// machine lets us, else a limit on the size of any file this process writes (with SIGXFSZ
// ignored, a write past it fails as on a full disk).
void Runner::cmdSmallFolder(const Tokens &t)
{
    const fs::path path = hostPath(t[1].text);
    const long long bytes = std::stoll(t[3].text);
    fs::create_directories(path);
    const std::string size = "size=" + std::to_string(std::max(4096LL, bytes));
    if (::mount("tmpfs", path.c_str(), "tmpfs", 0, size.c_str()) == 0) {
        m_mounts.push_back(path);
        return;
    }
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    if (!m_savedFileLimit)
        m_savedFileLimit = limit;
    limit.rlim_cur = static_cast<rlim_t>(bytes);
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        fail("neither a small tmpfs nor a file-size limit could be set here");
}

void Runner::releaseSmallFolders()
{
    for (const fs::path &p : m_mounts)
        ::umount2(p.c_str(), MNT_DETACH);
    m_mounts.clear();
    if (m_savedFileLimit) {
        ::setrlimit(RLIMIT_FSIZE, &*m_savedFileLimit);
        m_savedFileLimit.reset();
    }
}

void Runner::cmdRegistry(const Tokens &t)
{
    if (t.size() != 4)
        fail("registry takes a key, a name and a value");
    if (m_useReal["settings"]) {
        // The extraction tool's key has a store of its own.
        const bool dac = rt::UCase(rt::Left(t[1].text, 16)) == "SOFTWARE\\MERVANE";
        platform::settings::FileSettingsStore store(dac ? extractionStoreFile() : m_work / "config" / "velmora-works" / "registry.ini");
        store.OpenKey(platform::SettingsStore::HKEY_CURRENT_USER, t[1].text);
        store.WriteValue(t[2].text, expand(t[3].text), platform::SettingsStore::REG_SZ);
        store.CloseKey();
    } else {
        m_world->registry->keys[t[1].text][t[2].text] = expand(t[3].text);
    }
}

void Runner::cmdUse(const Tokens &t)
{
    if (t.size() != 3 || (t[1].text != "real" && t[1].text != "fake"))
        fail("use real|fake COMPONENT");
    const std::string &component = t[2].text;
    if (m_app)
        fail("use must come before start");
    static const std::set<std::string> withReal = {"settings", "sysinfo", "shell", "writer", "decoder", "audio", "http",
                                                   "reader", "imaging", "scanner", "printer"};
    static const std::set<std::string> known = {"settings", "sysinfo", "shell", "writer", "decoder", "audio",
                                                "reader", "imaging", "scanner", "printer", "http"};
    if (!known.count(component))
        fail("unknown component \"" + component + "\"");
    if (t[1].text == "real" && !withReal.count(component))
        fail("there is no real " + component + " yet");
    m_useReal[component] = t[1].text == "real";
}

void Runner::cmdFake(const Tokens &t)
{
    if (t.size() < 3)
        fail("fake COMPONENT SETTING VALUE...");
    const std::string &component = t[1].text;
    const std::string &setting = t[2].text;
    auto &w = *m_world;
    if (component == "sysinfo" && setting == "memory" && t.size() == 4) {
        w.memoryUsedPercent = toInt(t[3].text);
    } else if (component == "writer" && setting == "init" && t.size() == 4) {
        w.writerInitResult = toInt(t[3].text);
    } else if (component == "writer" && setting == "devices") {
        if ((t.size() - 3) % 2 != 0)
            fail("fake writer devices takes pairs of name and driver type");
        w.writerDevices.clear();
        for (size_t i = 3; i + 1 < t.size(); i += 2)
            w.writerDevices.emplace_back(t[i].text, toInt(t[i + 1].text));
    } else if (component == "writer" && setting == "disc" && t.size() >= 4) {
        w.discStates.clear();
        for (size_t i = 3; i < t.size(); ++i)
            w.discStates.push_back(toInt(t[i].text));
        w.discStateReads = 0;
    } else if (component == "writer" && setting == "addtrack" && t.size() == 4) {
        w.addTrackResult = toInt(t[3].text);
    } else if (component == "writer" && setting == "writetracks" && t.size() == 4) {
        w.writeTracksResult = toInt(t[3].text);
    } else if (component == "writer" && setting == "percent" && t.size() == 4) {
        w.msPerPercent = toInt(t[3].text);
    } else if (component == "writer" && setting == "closing" && t.size() == 4) {
        w.closingMs = toInt(t[3].text);
    } else if (component == "decoder" && setting == "time" && t.size() == 4) {
        w.decodeMs = toInt(t[3].text);
    } else if (component == "decoder" && setting == "refuse" && t.size() == 3) {
        w.triggerStartFails = true;
    } else if (component == "decoder" && setting == "diskfull" && t.size() == 4) {
        w.diskFullAfterBuffers = toInt(t[3].text);
    } else if (component == "audio" && setting == "length" && t.size() == 4) {
        w.playMs = toInt(t[3].text);
    } else if ((component == "writer" || component == "audio" || component == "decoder") && setting == "absent" && t.size() == 3) {
        (component == "writer" ? w.hasWriter : component == "audio" ? w.hasAudioChain : w.hasDecoder) = false;
    } else if (component == "reader" && setting == "cancel-isrc-after" && t.size() == 4) {
        // The user's click on Cancel while the codes are read, right after the N-th track.
        const int after = toInt(t[3].text);
        w.reader->onReadIsrc = [this, after](int calls) {
            if (calls != after || !m_app)
                return;
            if (ui::Window *dlg = m_app->findLoaded("ISRCDlg"))
                if (ui::Control *c = dlg->control("btnCancel"))
                    c->userClick();
        };
    } else if (component == "reader") {
        std::string error;
        if (!setFakeReader(w, Tokens(t.begin() + 2, t.end()), error))
            fail(error);
    } else if (component == "shell" && setting == "result" && t.size() == 4) {
        w.shellResult = toInt(t[3].text);
    } else if (component == "http" && setting == "serve" && t.size() == 4) {
        w.http.servePath = hostPath(t[3].text).string();
    } else if (component == "http" && setting == "time" && t.size() == 4) {
        w.http.transferMs = toInt(t[3].text);
    } else if (component == "http" && setting == "status" && t.size() == 5) {
        w.http.statusCode = toInt(t[3].text);
        w.http.statusText = t[4].text;
    } else if (component == "http" && setting == "fail" && t.size() == 5) {
        w.http.fails = true;
        w.http.failCode = toInt(t[3].text);
        w.http.failText = t[4].text;
    } else if (component == "http" && setting == "silent" && t.size() == 3) {
        w.http.silent = true;
    } else if (component == "http" && setting == "nofile" && t.size() == 3) {
        w.http.endsWithoutFile = true;
    } else if (component == "audio" && setting == "eqini" && t.size() == 5) {
        w.iniGains[toInt(t[3].text)] = std::stod(t[4].text);
    } else if (component == "imaging" || component == "scanner" || component == "printer") {
        std::vector<std::string> values;
        for (size_t i = 3; i < t.size(); ++i)
            values.push_back(expand(t[i].text));
        if (const std::string e = platform::fake::setFakeImaging(w, component, setting, values); !e.empty())
            fail(e);
    } else {
        fail("unknown fake setting \"" + component + " " + setting + "\"");
    }
}

void Runner::cmdStart()
{
    if (m_app)
        fail("the program is already started");
    m_world->loop = m_loop.get();
    m_components = std::make_unique<platform::Components>(platform::fake::makeFakeComponents(m_world));
    if (m_useReal["decoder"])
        platform::media::addRealMediaComponents(*m_components, *m_loop);
    if (m_useReal["audio"]) {
        // The player plays into its silent sink, which records what it plays in $WORK/sound.
        platform::audio::PlayerOptions o;
        o.soundFolder = m_work / "sound";
        platform::audio::addRealPlayerComponents(*m_components, *m_loop, o);
    }
    if (m_useReal["writer"]) {
        // The Image Recorder only: a scenario never burns a disc in a drive of the machine.
        platform::writer::Options o;
        o.imageFolder = m_work / "discs";
        o.logFolder = m_work / "state" / "brasswick";
        o.scanSystemRecorders = false;
        rt::EventLoop &loop = *m_loop;
        m_components->writerEngine = [&loop, o] { return std::make_unique<platform::writer::CdWriterEngine>(loop, o); };
    }
    if (m_useReal["reader"]) {
        // The discs of $WORK/discs only (the Image Recorder's, when the writer is real too).
        platform::cdrom::ReaderOptions o;
        o.imageFolder = m_work / "discs";
        o.scanSystemDrives = false;
        platform::cdrom::addRealCdReader(*m_components, *m_loop, o);
    }
    if (m_useReal["settings"]) {
        const fs::path file = m_work / "config" / "velmora-works" / "registry.ini";
        m_components->settingsStore = [file] { return std::make_unique<platform::settings::FileSettingsStore>(file); };
        const fs::path dac = extractionStoreFile();
        m_components->extractionStore = [dac] { return std::make_unique<platform::settings::FileSettingsStore>(dac); };
    }
    // Normalising is a routine on a file, the same on fakes and real components.
    m_components->normalizeFile = [](const std::string &file, int32_t level, const std::function<void(int32_t, int32_t)> &progress) {
        platform::media::normalizeWaveFile(file, level, progress);
    };
    m_components->checksumWaveFile = [](const std::string &file, bool firstTrack, bool lastTrack) {
        return platform::media::checksumWaveFile(file, firstTrack, lastTrack);
    };
    if (m_useReal["imaging"]) {
        // A clipboard of the scenario's own: the machine's is not touched.
        auto clipboard = platform::imaging::makeMemoryClipboard();
        m_components->imageClipboard = [clipboard] { return clipboard; };
        m_components->imageControl = [clipboard] { return platform::imaging::makeGmImageControl(clipboard); };
    }
    if (m_useReal["scanner"]) {
        // SANE with its own test backend alone, configured under $WORK.
        testsupport::useSaneTestBackend(m_work / "sane");
        rt::EventLoop &loop = *m_loop;
        m_components->scanner = [&loop] { return platform::scanner::makeSaneScanner(loop); };
    }
    if (m_useReal["printer"]) {
        // Every print job becomes a PDF file in $WORK/prints.
        platform::printer::Options o;
        o.pdfFolder = m_work / "prints";
        m_components->printer = [o] { return platform::printer::makeQtCoverPrinter(o); };
    }
    if (m_useReal["sysinfo"])
        m_components->systemInfo = [] { return std::make_unique<platform::system::ProcSystemInfo>(); };
    if (m_useReal["http"]) {
        rt::EventLoop &loop = *m_loop;
        m_components->httpDownload = [&loop] { return std::make_unique<platform::http::CurlHttpDownload>(loop); };
    }
    if (m_useReal["shell"])
        m_components->shell = [] { return std::make_unique<platform::system::XdgShell>(); };
    m_app = std::make_unique<ui::AppContext>(*m_loop, *m_boxes, *m_dialogs, *m_components, m_prog.string());
    shell::registerShellWindows(*m_app);
    layout::registerLayoutWindows(*m_app);
    burn::registerBurnWindows(*m_app);
    convert::registerConvertWindows(*m_app);
    extract::registerExtractWindows(*m_app);
    cover::registerCoverWindows(*m_app);
    addons::registerAddonWindows(*m_app);
    playback::registerPlaybackWindows(*m_app);
    act([&] { m_loop->deliver([&] { shell::startProgram(*m_app); }); });
}

// ---- acting ----

void Runner::cmdSettle(const Tokens &t)
{
    if (t.size() > 2)
        fail("settle [MS]");
    requireRunning();
    const int64_t limit = t.size() == 2 ? toInt(t[1].text) : 120000;
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    auto last = start;
    for (;;) {
        // Real time passes for the window timers too, as it would for a user.
        const auto now = Clock::now();
        const int64_t passed = std::chrono::duration_cast<std::chrono::milliseconds>(now - last).count();
        if (passed > 0)
            last += std::chrono::milliseconds(passed);
        m_loop->wait(passed);
        m_app->afterEvent();
        if (m_app->ended())
            return;
        const auto busy = m_loop->workInHand();
        if (busy.empty() && !m_loop->hasPosted())
            return;
        if (std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count() > limit) {
            std::string names;
            for (const auto &b : busy)
                names += (names.empty() ? "" : ", ") + b;
            fail("still busy after " + std::to_string(limit) + " ms: " + (names.empty() ? "events" : names));
        }
        // Window timers catch up in one go when the wait is over; events wake it at once.
        m_loop->waitForPost(10);
    }
}

ui::AppContext &Runner::app()
{
    if (!m_app)
        fail("the program has not been started");
    return *m_app;
}

void Runner::requireRunning()
{
    if (!m_app)
        fail("the program has not been started");
}

ui::Window &Runner::loadedWindow(const std::string &name)
{
    ui::AppContext &a = app();
    if (ui::Window *w = a.findLoaded(name))
        return *w;
    if (a.ended())
        fail("the program has ended");
    if (!a.hasForm(name))
        fail("unknown window \"" + name + "\"");
    fail("window " + name + " is not loaded");
}

ui::Control &Runner::controlOf(const std::string &reference, std::vector<int> *)
{
    const auto parts = splitReference(reference);
    if (parts.size() != 2)
        fail("expected WINDOW.CONTROL, got \"" + reference + "\"");
    ui::Window &w = loadedWindow(parts[0]);
    const NameWithArgs c = parseNameWithArgs(parts[1]);
    if (!c.valid || c.args.size() > 1)
        fail("bad control name \"" + parts[1] + "\"");
    ui::Control *control = w.control(c.name, c.args.empty() ? -1 : c.args[0]);
    if (!control)
        fail("window " + parts[0] + " has no control \"" + parts[1] + "\"");
    return *control;
}

void Runner::act(const std::function<void()> &action)
{
    action();
    if (m_app) {
        m_loop->doEvents();
        m_app->afterEvent();
    }
}

void Runner::cmdClick(const Tokens &t, bool twice)
{
    if (t.size() != 2 && !(t.size() == 4 && t[2].text == "row"))
        fail("click W.C [row N]");
    ui::Control &c = controlOf(t[1].text);
    if (!c.Enabled())
        fail(c.fullName() + " is disabled: a user cannot click it");
    if (!c.Visible())
        fail(c.fullName() + " is not visible: a user cannot click it");
    if (t.size() == 4) {
        auto *list = dynamic_cast<ui::ListBox *>(&c);
        if (!list)
            fail(c.fullName() + " is not a list");
        // A list view counts its items from 1.
        const int row = toInt(t[3].text) - list->rowBase();
        if (row < 0 || row >= list->ListCount())
            fail("row " + t[3].text + " is not in the list of " + std::to_string(list->ListCount()));
        act([&] { twice ? list->userDblClickRow(row) : list->userClickRow(row); });
    } else {
        act([&] { twice ? c.userDblClick() : c.userClick(); });
    }
}

void Runner::cmdSelect(const Tokens &t)
{
    if (t.size() != 4 || (t[3].text != "on" && t[3].text != "off"))
        fail("select W.C N on|off");
    auto *list = dynamic_cast<ui::ListBox *>(&controlOf(t[1].text));
    if (!list)
        fail(t[1].text + " is not a list");
    act([&] { list->setSelected(toInt(t[2].text) - list->rowBase(), t[3].text == "on"); });
}

void Runner::cmdToolbar(const Tokens &t)
{
    if (t.size() != 3)
        fail("toolbar W.C N");
    auto *bar = dynamic_cast<ui::ToolBar *>(&controlOf(t[1].text));
    if (!bar)
        fail(t[1].text + " is not a toolbar");
    if (!bar->Enabled())
        fail(t[1].text + " is disabled");
    const int index = toInt(t[2].text);
    act([&] { bar->userButton(index); });
}

void Runner::cmdMenu(const Tokens &t)
{
    if (t.size() != 2)
        fail("menu W.ENTRY");
    auto *entry = dynamic_cast<ui::MenuItem *>(&controlOf(t[1].text));
    if (!entry)
        fail(t[1].text + " is not a menu entry");
    if (!entry->Enabled() || !entry->Visible())
        fail(t[1].text + " cannot be chosen now");
    act([&] { entry->userClick(); });
}

void Runner::cmdType(const Tokens &t)
{
    if (t.size() != 3 || !t[2].quoted)
        fail("type W.C \"TEXT\"");
    ui::Control &c = controlOf(t[1].text);
    if (!c.Enabled())
        fail(c.fullName() + " is disabled: a user cannot type into it");
    const std::string text = expand(t[2].text);
    if (auto *box = dynamic_cast<ui::TextBox *>(&c))
        act([&] { box->userType(text); });
    else if (auto *combo = dynamic_cast<ui::ComboBox *>(&c))
        act([&] { combo->userType(text); });
    else
        fail(c.fullName() + " takes no typing");
}

void Runner::cmdPick(const Tokens &t)
{
    ui::Control &c = controlOf(t.size() > 1 ? t[1].text : "");
    if (!c.Enabled())
        fail(c.fullName() + " is disabled: a user cannot pick from it");
    if (auto *combo = dynamic_cast<ui::ComboBox *>(&c)) {
        if (t.size() != 3)
            fail("pick W.C \"ENTRY\"");
        bool found = false;
        act([&] { found = combo->userPick(expand(t[2].text)); });
        if (!found)
            fail(c.fullName() + " has no entry \"" + t[2].text + "\"");
        return;
    }
    if (auto *tree = dynamic_cast<ui::TreeView *>(&c)) {
        if (!tree->Visible())
            fail(c.fullName() + " is not visible: a user cannot pick from it");
        if (t.size() == 4 && !t[2].quoted && t[2].text == "row") {
            const int row = toInt(t[3].text);
            if (row < 0 || row >= tree->ListCount())
                fail("row " + std::to_string(row) + " is not in the tree of " + std::to_string(tree->ListCount()));
            act([&] { tree->userSelectRow(row); });
            return;
        }
        if (t.size() != 3)
            fail("pick W.C \"ENTRY\" | pick W.C row N");
        bool found = false;
        act([&] { found = tree->userPick(expand(t[2].text)); });
        if (!found)
            fail(c.fullName() + " has no entry \"" + t[2].text + "\"");
        return;
    }
    fail(c.fullName() + " is not a combo or a tree");
}

void Runner::cmdSlide(const Tokens &t)
{
    if (t.size() != 3)
        fail("slide W.C VALUE");
    auto *meter = dynamic_cast<ui::Meter *>(&controlOf(t[1].text));
    if (!meter || meter->style() != ui::Meter::Style::Slider)
        fail(t[1].text + " is not a slider");
    act([&] { meter->userSlide(toInt(t[2].text)); });
}

void Runner::cmdMouse(const Tokens &t)
{
    if (t.size() < 5 || t.size() > 6)
        fail("mouse W.C down|move|up X Y [left|right|none]");
    const std::string &what = t[2].text;
    if (what != "down" && what != "move" && what != "up")
        fail("mouse takes down, move or up");
    int button = ui::NoButton;
    if (t.size() == 6)
        button = t[5].text == "left" ? ui::LeftButton : t[5].text == "right" ? ui::RightButton : ui::NoButton;
    const int x = toInt(t[3].text), y = toInt(t[4].text);
    const auto parts = splitReference(t[1].text);
    if (parts.size() == 1) {
        ui::Window &w = loadedWindow(parts[0]);
        act([&] {
            if (w.MouseMove && what == "move")
                m_loop->deliver([&] { w.MouseMove(button, x, y); });
        });
        return;
    }
    ui::Control &c = controlOf(t[1].text);
    act([&] { c.userMouse(what, button, x, y); });
}

void Runner::cmdClose(const Tokens &t)
{
    if (t.size() != 2)
        fail("close W");
    ui::Window &w = loadedWindow(t[1].text);
    act([&] { w.userClose(); });
}

void Runner::cmdCall(const Tokens &t)
{
    if (t.size() < 2)
        fail("call W.ROUTINE [ARG...]");
    const auto parts = splitReference(t[1].text);
    if (parts.size() != 2)
        fail("call W.ROUTINE or NAME.ROUTINE");
    std::vector<std::string> args;
    for (size_t i = 2; i < t.size(); ++i)
        args.push_back(expand(t[i].text));
    if (auto it = m_objects.find(parts[0]); it != m_objects.end()) {
        auto result = it->second->call(parts[1], args);
        if (!result)
            fail(parts[0] + " has no routine \"" + parts[1] + "\"");
        m_lastResult = *result;
        return;
    }
    ui::Window &w = [&]() -> ui::Window & {
        // Calling a routine of a window refers to it, which loads it.
        ui::AppContext &a = app();
        if (!a.findLoaded(parts[0]) && !a.hasForm(parts[0]))
            fail("unknown window or object \"" + parts[0] + "\"");
        ui::Window *found = nullptr;
        act([&] { m_loop->deliver([&] { found = &a.formByName(parts[0]); }); });
        if (!found)
            fail("window " + parts[0] + " could not be loaded");
        return *found;
    }();
    std::optional<std::string> result;
    act([&] { m_loop->deliver([&] { result = w.callRoutine(parts[1], args); }); });
    if (!result && !app().ended())
        fail(parts[0] + " has no routine \"" + parts[1] + "\"");
    m_lastResult = result.value_or("");
}

void Runner::cmdNew(const Tokens &t)
{
    if (t.size() != 4 || t[2].text != "as")
        fail("new CLASS as NAME");
    auto object = makeScriptObject(t[1].text);
    if (!object)
        fail("the system has no class \"" + t[1].text + "\"");
    m_objects[t[3].text] = std::move(object);
}

void Runner::cmdSet(const Tokens &t)
{
    if (t.size() != 3)
        fail("set NAME.PROPERTY \"VALUE\"");
    const auto parts = splitReference(t[1].text);
    const std::string value = expand(t[2].text);
    if (parts.size() == 2) {
        auto it = m_objects.find(parts[0]);
        if (it == m_objects.end())
            fail("no object \"" + parts[0] + "\"; make one with new");
        if (!it->second->set(parts[1], value))
            fail(parts[0] + " has no property \"" + parts[1] + "\"");
        return;
    }
    if (parts.size() != 3)
        fail("set NAME.PROPERTY or W.C.PROPERTY");
    ui::Control &c = controlOf(parts[0] + "." + parts[1]);
    const NameWithArgs p = parseNameWithArgs(parts[2]);
    bool known = true;
    act([&] { m_loop->deliver([&] { known = c.setProperty(p.name, p.args, value); }); });
    if (!known)
        fail(c.fullName() + " has no property \"" + parts[2] + "\"");
}

void Runner::cmdAnswer(const Tokens &t)
{
    static const std::map<std::string, int> answers = {{"Yes", ui::vbYes},     {"No", ui::vbNo},         {"OK", ui::vbOK},
                                                       {"Cancel", ui::vbCancel}, {"Retry", ui::vbRetry}, {"Ignore", ui::vbIgnore},
                                                       {"Abort", ui::vbAbort}};
    if (t.size() != 2 || !answers.count(t[1].text))
        fail("answer Yes|No|OK|Cancel|Retry|Ignore|Abort");
    m_boxes->queueAnswer(answers.at(t[1].text));
}

void Runner::cmdDialog(const Tokens &t)
{
    if (t.size() != 2)
        fail("dialog \"PATH\" | dialog cancel");
    if (!t[1].quoted && t[1].text == "cancel")
        m_dialogs->queueResult(std::nullopt);
    else
        m_dialogs->queueResult(expand(t[1].text));
}

// ---- checking ----

void Runner::check(bool ok, const std::string &line, const std::string &expected, const std::string &got)
{
    if (ok) {
        ++m_passed;
        m_out << "ok " << line << "\n";
    } else {
        ++m_failed;
        m_out << "FAIL " << line << ": expected " << expected << ", got " << got << "\n";
    }
}

std::string Runner::quoteFor(const std::string &text)
{
    std::string out = "\"";
    for (char c : text) {
        if (c == '\r')
            out += "<CR>";
        else if (c == '\n')
            out += "<LF>";
        else
            out += c;
    }
    return out + "\"";
}

std::string Runner::valueOf(const std::string &reference)
{
    if (reference == "result")
        return m_lastResult;
    const auto parts = splitReference(reference);
    if (parts.size() == 2) {
        if (auto it = m_objects.find(parts[0]); it != m_objects.end()) {
            auto v = it->second->get(parts[1]);
            if (!v)
                fail(parts[0] + " has no property \"" + parts[1] + "\"");
            return *v;
        }
        ui::Window &w = loadedWindow(parts[0]);
        if (auto v = w.property(parts[1]))
            return *v;
        if (auto v = w.member(parts[1]))
            return *v;
        fail("window " + parts[0] + " has no property or member \"" + parts[1] + "\"");
    }
    if (parts.size() == 3) {
        ui::Window &w = loadedWindow(parts[0]);
        const NameWithArgs c = parseNameWithArgs(parts[1]);
        const NameWithArgs p = parseNameWithArgs(parts[2]);
        if (!c.valid || !p.valid)
            fail("bad reference \"" + reference + "\"");
        if (ui::Control *control = w.control(c.name, c.args.empty() ? -1 : c.args[0])) {
            auto v = control->property(p.name, p.args);
            if (!v)
                fail(control->fullName() + " has no property \"" + parts[2] + "\"");
            return *v;
        }
        // A closed component of the window, as its fake was told.
        const std::string key = parts[1] + "." + parts[2];
        if (auto it = m_world->properties.find(key); it != m_world->properties.end())
            return it->second;
        fail("window " + parts[0] + " has no control \"" + parts[1] + "\" (nor a component property " + key + " that was set)");
    }
    fail("expected W.C.PROPERTY, W.member, NAME.PROPERTY or result, got \"" + reference + "\"");
}

void Runner::cmdExpect(const Tokens &t, const std::string &line)
{
    if (t.size() != 4 || (t[2].text != "==" && t[2].text != "!="))
        fail("expect REFERENCE ==|!= \"TEXT\"");
    const std::string expected = expand(t[3].text);
    const std::string got = valueOf(t[1].text);
    const bool equal = got == expected;
    if (t[2].text == "==")
        check(equal, line, quoteFor(expected), quoteFor(got));
    else
        check(!equal, line, "anything but " + quoteFor(expected), quoteFor(got));
}

void Runner::cmdExpectLines(const Tokens &t, const std::string &line)
{
    if (t.size() < 2)
        fail("expect-lines W.C.PROPERTY \"LINE\"...");
    const auto got = splitCrLf(valueOf(t[1].text));
    std::vector<std::string> expected;
    for (size_t i = 2; i < t.size(); ++i)
        expected.push_back(expand(t[i].text));
    std::string expectedText, gotText;
    for (const auto &l : expected)
        expectedText += quoteFor(l) + " ";
    for (const auto &l : got)
        gotText += quoteFor(l) + " ";
    check(got == expected, line, expectedText, gotText);
}

void Runner::cmdExpectBox(const Tokens &t, const std::string &line)
{
    if (t.size() < 2)
        fail("expect-box \"TEXT\" [title \"T\"] [icon I] [buttons B]");
    auto &shown = m_boxes->shown();
    if (shown.empty()) {
        check(false, line, "a message box " + quoteFor(t[1].text), "none");
        return;
    }
    const auto box = shown.front();
    shown.pop_front();
    std::string expected = quoteFor(expand(t[1].text));
    std::string got = quoteFor(box.request.prompt);
    bool ok = box.request.prompt == expand(t[1].text);
    for (size_t i = 2; i + 1 < t.size(); i += 2) {
        const std::string &key = t[i].text;
        const std::string &value = t[i + 1].text;
        if (key == "title") {
            ok = ok && box.request.title == value;
            expected += " title " + quoteFor(value);
            got += " title " + quoteFor(box.request.title);
        } else if (key == "icon") {
            ok = ok && iconName(box.request.icon()) == value;
            expected += " icon " + value;
            got += std::string(" icon ") + iconName(box.request.icon());
        } else if (key == "buttons") {
            ok = ok && buttonsName(box.request.buttons()) == value;
            expected += " buttons " + value;
            got += std::string(" buttons ") + buttonsName(box.request.buttons());
        } else {
            fail("expect-box knows title, icon and buttons, not \"" + key + "\"");
        }
    }
    if (t.size() % 2 != 0)
        fail("expect-box: a setting lacks its value");
    check(ok, line, expected, got);
}

void Runner::cmdExpectBoxLines(const Tokens &t, const std::string &line)
{
    if (t.size() < 2)
        fail("expect-box-lines \"LINE\"...");
    auto &shown = m_boxes->shown();
    if (shown.empty()) {
        check(false, line, "a message box", "none");
        return;
    }
    const std::string prompt = shown.front().request.prompt;
    shown.pop_front();
    std::vector<std::string> got;
    size_t start = 0;
    for (;;) {
        const size_t end = prompt.find('\n', start);
        std::string part = prompt.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (!part.empty() && part.back() == '\r')
            part.pop_back();
        got.push_back(part);
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    std::vector<std::string> expected;
    std::string expectedText, gotText;
    for (size_t i = 1; i < t.size(); ++i) {
        expected.push_back(expand(t[i].text));
        expectedText += quoteFor(expected.back()) + " ";
    }
    for (const auto &l : got)
        gotText += quoteFor(l) + " ";
    check(got == expected, line, expectedText, gotText);
}

void Runner::cmdExpectNoBox(const std::string &line)
{
    auto &shown = m_boxes->shown();
    check(shown.empty(), line, "no message box", shown.empty() ? "none" : quoteFor(shown.front().request.prompt));
}

void Runner::cmdExpectFile(const Tokens &t, const std::string &line)
{
    if (t.size() < 3)
        fail("expect-file \"PATH\" ...");
    const fs::path path = hostPath(t[1].text);
    const std::string &what = t[2].text;
    const bool exists = fs::exists(path);
    if (what == "exists" || what == "missing") {
        const bool want = what == "exists";
        check(exists == want, line, what, exists ? "exists" : "missing");
        return;
    }
    if (!exists) {
        check(false, line, "the file", "missing");
        return;
    }
    const std::string content = readWhole(path);
    if (what == "==" && t.size() == 4) {
        const std::string text = rt::fromAnsi(content);
        check(text == expand(t[3].text), line, quoteFor(expand(t[3].text)), quoteFor(text));
    } else if (what == "line" && t.size() == 6 && t[4].text == "==") {
        const auto lines = splitCrLf(rt::fromAnsi(content));
        const int n = toInt(t[3].text);
        const std::string got = n >= 1 && n <= static_cast<int>(lines.size()) ? lines[n - 1] : "<no line " + t[3].text + ">";
        check(got == expand(t[5].text), line, quoteFor(expand(t[5].text)), quoteFor(got));
    } else if (what == "lines" && t.size() == 4) {
        const auto lines = splitCrLf(content);
        check(static_cast<int>(lines.size()) == toInt(t[3].text), line, t[3].text + " lines", std::to_string(lines.size()));
    } else if (what == "bytes" && t.size() == 4) {
        check(static_cast<long long>(content.size()) == std::stoll(t[3].text), line, t[3].text + " bytes",
              std::to_string(content.size()));
    } else {
        fail("expect-file \"PATH\" == \"TEXT\" | line N == \"TEXT\" | lines N | bytes N | exists | missing");
    }
}

void Runner::cmdExpectWindow(const std::string &what, const Tokens &t, const std::string &line)
{
    if (t.size() != 2)
        fail(what + " W");
    const std::string &name = t[1].text;
    if (m_app && !m_app->hasForm(name))
        fail("unknown window \"" + name + "\"");
    ui::Window *w = m_app ? m_app->findLoaded(name) : nullptr;
    if (what == "expect-loaded")
        check(w != nullptr, line, "loaded", "not loaded");
    else if (what == "expect-unloaded")
        check(w == nullptr, line, "not loaded", "loaded");
    else if (what == "expect-visible")
        check(w && w->Visible(), line, "visible", w ? "hidden" : "not loaded");
    else
        check(w && !w->Visible(), line, "hidden", w ? "visible" : "not loaded");
}

void Runner::cmdExpectEnded(const std::string &line)
{
    const bool ended = m_app && m_app->ended();
    check(ended, line, "the program ended", "it is running");
}

void Runner::cmdExpectError(const Tokens &t, const std::string &line)
{
    if (t.size() != 2)
        fail("expect-error N");
    const int got = m_app && m_app->ended() ? m_app->endError() : 0;
    check(m_app && m_app->ended() && got == toInt(t[1].text), line, "ended with run-time error " + t[1].text,
          m_app && m_app->ended() ? "ended with error " + std::to_string(got) : "still running");
}

void Runner::cmdDump(const Tokens &t)
{
    if (t.size() != 2)
        fail("dump W");
    ui::Window &w = loadedWindow(t[1].text);
    m_out << "-- " << w.name() << " " << quoteFor(w.Caption()) << (w.Visible() ? " visible" : " hidden") << "\n";
    for (ui::Control *c : w.controls()) {
        m_out << "   " << c->fullName() << " (" << c->kind() << ")";
        for (const auto &p : c->propertyNames()) {
            const NameWithArgs n = parseNameWithArgs(p);
            m_out << " " << p << "=" << quoteFor(c->property(n.name, n.args).value_or("?"));
        }
        if (auto *list = dynamic_cast<ui::ListBox *>(c)) {
            for (int i = 0; i < list->ListCount(); ++i)
                m_out << "\n      [" << i << "] " << quoteFor(list->List(i));
        }
        if (auto *combo = dynamic_cast<ui::ComboBox *>(c)) {
            for (int i = 0; i < combo->ListCount(); ++i)
                m_out << "\n      [" << i << "] " << quoteFor(combo->List(i));
        }
        if (auto *tree = dynamic_cast<ui::TreeView *>(c)) {
            for (int i = 0; i < tree->ListCount(); ++i)
                m_out << "\n      [" << i << "] " << ui::levelName(tree->RowLevel(i)) << " " << quoteFor(tree->List(i));
        }
        m_out << "\n";
    }
}

} // namespace scenario
