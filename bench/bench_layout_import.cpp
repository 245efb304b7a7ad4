// The layout builder driven headless as a user drives it: Load MP3 Files on a folder of real
// MP3s (scan, rows, status texts), then every row added to the burn list. Both are compared with
// the analysis the import is made of (three frame scans and one cIDV3 per file, as in
// bench_mp3_import), so the ratios say what the window costs on top of the analysis.
//
// Each case runs at 250, 500 and 1000 files; the ms_per_1000_files counter is the same at every
// size when the work grows linearly. BM_LayoutVersusAnalysis runs all three in the same
// iterations for the ratios, and reports the resident set growth of the first import and add.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <stdlib.h>

#include <benchmark/benchmark.h>

#include "Mp3Maker.h"
#include "layout/Form5.h"
#include "layout/LayoutWindows.h"
#include "mp3/FrameScan.h"
#include "mp3/cIDV3.h"
#include "platform/Components.h"
#include "platform/fake/FakeComponents.h"
#include "runtime/VirtualEventLoop.h"
#include "shell/ShellWindows.h"
#include "ui/AppContext.h"
#include "ui/ScriptedServices.h"
#include "ImportAnalysis.h"

namespace fs = std::filesystem;

namespace {

constexpr int MaxFiles = 1000;
constexpr int DiscSeconds = 4800;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point t0)
{
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

// The test files, made once for the run and removed at its end. 5 s each, so that adding all
// 1000 (5000 s) runs the last rows past an 80 minute disc and through the over-time display.
// One folder per size, the smaller ones hard links to the first files of the largest.
class Files {
public:
    Files()
    {
        std::string pattern = (fs::temp_directory_path() / "bench-layout-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_root = pattern;
        // The program folder: the import writes LocalJ/lastlocal.vel.
        fs::create_directories(m_root / "prog" / "LocalJ");
        const fs::path all = folder(MaxFiles);
        fs::create_directories(all);
        for (int i = 0; i < MaxFiles; ++i) {
            testsupport::Mp3Options options;
            options.seconds = 5;
            if (i % 4 == 0)
                options.id3v1Title = "Track " + std::to_string(i);
            if (!testsupport::makeMp3((all / name(i)).string(), options))
                std::abort();
        }
        for (int n : {250, 500}) {
            fs::create_directories(folder(n));
            for (int i = 0; i < n; ++i) {
                std::error_code ec;
                fs::create_hard_link(all / name(i), folder(n) / name(i), ec);
                if (ec)
                    fs::copy_file(all / name(i), folder(n) / name(i));
            }
        }
    }
    ~Files()
    {
        std::error_code ec;
        fs::remove_all(m_root, ec);
    }
    fs::path folder(int n) const { return m_root / ("n" + std::to_string(n)); }
    std::string program() const { return (m_root / "prog").string(); }
    std::vector<std::string> paths(int n) const
    {
        std::vector<std::string> out;
        for (int i = 0; i < n; ++i)
            out.push_back((folder(n) / name(i)).string());
        return out;
    }

private:
    // Zero-padded, so that the folder's name order is the making order.
    static std::string name(int i)
    {
        std::string digits = std::to_string(i);
        return "track" + std::string(4 - digits.size(), '0') + digits + ".mp3";
    }
    fs::path m_root;
};

const Files &files()
{
    static const Files f;
    return f;
}


double analyseAll(const std::vector<std::string> &paths)
{
    const auto t0 = Clock::now();
    for (const std::string &p : paths)
        analyse(p);
    return secondsSince(t0);
}

// ---- the program, headless ----

// A fresh program with the layout builder open on an 80 minute disc, as the main window
// leaves it. Made and destroyed outside the timed parts.
class Session {
public:
    Session()
        : m_world(std::make_shared<platform::fake::FakeWorld>())
        , m_components(platform::fake::makeFakeComponents(m_world))
        , m_app(m_loop, m_boxes, m_dialogs, m_components, files().program())
    {
        shell::registerShellWindows(m_app);
        layout::registerLayoutWindows(m_app);
        m_loop.deliver([&] {
            m_form = &m_app.form<layout::Form5>();
            m_form->cdvalue(DiscSeconds);
        });
    }

    layout::Form5 &form() { return *m_form; }

    // Load MP3 Files, the folder dialog answered with `folder`.
    void load(const fs::path &folder)
    {
        m_dialogs.queueResult(folder.string());
        m_form->ctButton3.userClick();
        m_loop.doEvents();
    }
    void selectAll()
    {
        for (int i = 0; i < m_form->ctList1.ListCount(); ++i)
            m_form->ctList1.setSelected(i, true);
    }
    // Add to Burn List.
    void add()
    {
        m_form->ctButton1.userClick();
        m_loop.doEvents();
    }

    // Empty when all went as a user would expect, else what went wrong.
    std::string loadProblem(int n) const
    {
        if (m_app.ended())
            return "the program ended";
        if (m_form->ctList1.ListCount() != n)
            return "the import listed " + std::to_string(m_form->ctList1.ListCount()) + " rows";
        return boxProblem();
    }
    std::string addProblem(int n) const
    {
        if (m_app.ended())
            return "the program ended";
        if (m_form->ctList2.ListCount() != n)
            return "the burn list has " + std::to_string(m_form->ctList2.ListCount()) + " rows";
        return boxProblem();
    }

private:
    std::string boxProblem() const
    {
        auto &shown = const_cast<ui::ScriptedMessageBoxes &>(m_boxes).shown();
        return shown.empty() ? std::string() : "a message box came up: " + shown.front().request.prompt;
    }

    std::shared_ptr<platform::fake::FakeWorld> m_world;
    platform::Components m_components;
    rt::VirtualEventLoop m_loop;
    ui::ScriptedMessageBoxes m_boxes;
    ui::ScriptedDialogs m_dialogs;
    ui::AppContext m_app;
    layout::Form5 *m_form = nullptr;
};

// ---- memory ----

// A line of /proc/self/status in kB; 0 when it can't be read.
long statusKb(const std::string &key)
{
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line)) {
        if (line.compare(0, key.size() + 1, key + ":") == 0)
            return std::atol(line.c_str() + key.size() + 1);
    }
    return 0;
}

// Starts a new high-water mark at the present resident set; false when the kernel refuses.
bool resetPeak()
{
    std::ofstream out("/proc/self/clear_refs");
    out << "5";
    out.flush();
    return static_cast<bool>(out);
}

struct MemoryFigures {
    double importGrowthMb = 0; // peak during the import over the resident set before it
    double addGrowthMb = 0;    // peak during the select and add over the resident set before them
    double totalGrowthMb = 0;  // peak during both over the resident set before the import
    double retainedMb = 0;     // resident set after the add over the one before the import
    double peakMb = 0;         // the process's own peak
    bool peakReset = false;
    std::string problem;
};

// Measured once, on the first session of the run, before the other cases have grown the heap.
const MemoryFigures &memoryFigures()
{
    static const MemoryFigures figures = [] {
        MemoryFigures m;
        const fs::path folder = files().folder(MaxFiles);
        auto session = std::make_unique<Session>();
        const long before = statusKb("VmRSS");
        m.peakReset = resetPeak();
        session->load(folder);
        const long importPeak = statusKb("VmHWM");
        const long afterImport = statusKb("VmRSS");
        resetPeak();
        session->selectAll();
        session->add();
        const long addPeak = statusKb("VmHWM");
        const long afterAdd = statusKb("VmRSS");
        m.problem = session->addProblem(MaxFiles);
        m.importGrowthMb = (importPeak - before) / 1024.0;
        m.addGrowthMb = (addPeak - afterImport) / 1024.0;
        m.totalGrowthMb = (std::max(importPeak, addPeak) - before) / 1024.0;
        m.retainedMb = (afterAdd - before) / 1024.0;
        session.reset();
        m.peakMb = statusKb("VmHWM") / 1024.0;
        return m;
    }();
    return figures;
}

void setPer1000(benchmark::State &state, double seconds, int n)
{
    const double iterations = static_cast<double>(state.iterations());
    state.counters["ms_per_1000_files"] = iterations > 0 ? seconds / iterations / n * 1000 * 1e3 : 0;
    state.SetItemsProcessed(state.iterations() * n);
}

// ---- the cases ----

// Analysis, import and add in the same iterations, at 1000 files, for the ratios and memory.
void BM_LayoutVersusAnalysis(benchmark::State &state)
{
    const MemoryFigures &memory = memoryFigures();
    if (!memory.problem.empty()) {
        state.SkipWithError(memory.problem.c_str());
        return;
    }
    const fs::path folder = files().folder(MaxFiles);
    const auto paths = files().paths(MaxFiles);
    double analysis = 0, import = 0, add = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto session = std::make_unique<Session>();
        state.ResumeTiming();
        analysis += analyseAll(paths);
        auto t0 = Clock::now();
        session->load(folder);
        import += secondsSince(t0);
        state.PauseTiming();
        session->selectAll();
        state.ResumeTiming();
        t0 = Clock::now();
        session->add();
        add += secondsSince(t0);
        state.PauseTiming();
        const std::string problem = session->addProblem(MaxFiles);
        session.reset();
        state.ResumeTiming();
        if (!problem.empty()) {
            state.SkipWithError(problem.c_str());
            return;
        }
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["analysis_ms"] = analysis / n * 1e3;
    state.counters["import_ms"] = import / n * 1e3;
    state.counters["add_ms"] = add / n * 1e3;
    state.counters["import_ratio"] = analysis > 0 ? import / analysis : 0;
    state.counters["add_ratio"] = analysis > 0 ? add / analysis : 0;
    state.counters["import_rss_mb"] = memory.importGrowthMb;
    state.counters["add_rss_mb"] = memory.addGrowthMb;
    state.counters["both_rss_mb"] = memory.totalGrowthMb;
    state.counters["kept_rss_mb"] = memory.retainedMb;
    state.counters["peak_rss_mb"] = memory.peakMb;
    if (!memory.peakReset)
        state.SetLabel("peak not reset: growth figures are upper bounds");
}
// First, so that its memory figures come from a heap the other cases haven't grown.
BENCHMARK(BM_LayoutVersusAnalysis)->Unit(benchmark::kMillisecond);

void BM_Analysis(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    const auto paths = files().paths(n);
    double total = 0;
    for (auto _ : state) {
        const double s = analyseAll(paths);
        total += s;
        state.SetIterationTime(s);
    }
    setPer1000(state, total, n);
}
BENCHMARK(BM_Analysis)->Arg(250)->Arg(500)->Arg(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_Import(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    const fs::path folder = files().folder(n);
    double total = 0;
    for (auto _ : state) {
        Session session;
        const auto t0 = Clock::now();
        session.load(folder);
        const double s = secondsSince(t0);
        total += s;
        state.SetIterationTime(s);
        const std::string problem = session.loadProblem(n);
        if (!problem.empty()) {
            state.SkipWithError(problem.c_str());
            return;
        }
    }
    setPer1000(state, total, n);
}
BENCHMARK(BM_Import)->Arg(250)->Arg(500)->Arg(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_Add(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    const fs::path folder = files().folder(n);
    double total = 0;
    for (auto _ : state) {
        Session session;
        session.load(folder);
        session.selectAll();
        const auto t0 = Clock::now();
        session.add();
        const double s = secondsSince(t0);
        total += s;
        state.SetIterationTime(s);
        const std::string problem = session.addProblem(n);
        if (!problem.empty()) {
            state.SkipWithError(problem.c_str());
            return;
        }
    }
    setPer1000(state, total, n);
}
BENCHMARK(BM_Add)->Arg(250)->Arg(500)->Arg(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
