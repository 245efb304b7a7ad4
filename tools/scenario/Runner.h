#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <sys/resource.h>

#include "LocalHttpServer.h"
#include "ScriptObject.h"
#include "Tokenizer.h"
#include "platform/Components.h"
#include "platform/fake/FakeComponents.h"
#include "runtime/VirtualEventLoop.h"
#include "ui/AppContext.h"
#include "ui/ScriptedServices.h"

namespace scenario {

// Runs one scenario file against the real windows on virtual time.
class Runner {
public:
    // `installation` is the program folder of the build, copied to $WORK/prog for each file.
    Runner(std::filesystem::path installation, std::ostream &out);
    ~Runner();

    // Runs the file; counts of checks that passed and failed are added to the totals.
    void runFile(const std::filesystem::path &file);
    int passed() const { return m_passed; }
    int failed() const { return m_failed; }
    // Keep each file's $WORK folder instead of removing it.
    void setKeep(bool on) { m_keep = on; }

private:
    using Tokens = std::vector<Token>;
    struct Failure {
        std::string message;
    };

    void reset(const std::filesystem::path &file);
    void teardown();
    void runLine(const std::string &line);
    void dispatch(const Tokens &t);

    // Setting up the world.
    void cmdFile(const Tokens &t);
    void cmdRegistry(const Tokens &t);
    void cmdSmallFolder(const Tokens &t);
    void releaseSmallFolders();
    void cmdUse(const Tokens &t);
    void cmdFake(const Tokens &t);
    void cmdStart();
    void cmdSettle(const Tokens &t);
    // serve "FOLDER" [WAY]: a local HTTP server for the real HTTP client; $SERVER is its address.
    void cmdServe(const Tokens &t);
    // Acting.
    void cmdClick(const Tokens &t, bool twice);
    void cmdSelect(const Tokens &t);
    void cmdToolbar(const Tokens &t);
    void cmdMenu(const Tokens &t);
    void cmdType(const Tokens &t);
    void cmdPick(const Tokens &t);
    void cmdSlide(const Tokens &t);
    void cmdMouse(const Tokens &t);
    void cmdClose(const Tokens &t);
    void cmdCall(const Tokens &t);
    void cmdNew(const Tokens &t);
    void cmdSet(const Tokens &t);
    void cmdAnswer(const Tokens &t);
    void cmdDialog(const Tokens &t);
    // Checking.
    void cmdExpect(const Tokens &t, const std::string &line);
    void cmdExpectLines(const Tokens &t, const std::string &line);
    void cmdExpectBox(const Tokens &t, const std::string &line);
    void cmdExpectBoxLines(const Tokens &t, const std::string &line);
    void cmdExpectNoBox(const std::string &line);
    void cmdExpectFile(const Tokens &t, const std::string &line);
    void cmdExpectWindow(const std::string &what, const Tokens &t, const std::string &line);
    void cmdExpectEnded(const std::string &line);
    void cmdExpectError(const Tokens &t, const std::string &line);
    void cmdDump(const Tokens &t);

    void check(bool ok, const std::string &line, const std::string &expected, const std::string &got);
    [[noreturn]] static void fail(const std::string &message) { throw Failure{message}; }

    // Where the real store keeps the extraction tool's key.
    std::filesystem::path extractionStoreFile() const { return m_work / "config" / "mervane" / "dac.ini"; }
    // Text with $WORK and $PROG put in.
    std::string expand(const std::string &text) const;
    std::filesystem::path hostPath(const std::string &text) const;
    ui::AppContext &app();
    void requireRunning();
    ui::Window &loadedWindow(const std::string &name);
    ui::Control &controlOf(const std::string &reference, std::vector<int> *rowArgs = nullptr);
    std::string valueOf(const std::string &reference);
    // Runs a user action, then lets the events it posted run.
    void act(const std::function<void()> &action);
    static std::string quoteFor(const std::string &text);

    std::filesystem::path m_installation;
    std::ostream &m_out;
    int m_passed = 0;
    int m_failed = 0;
    bool m_keep = false;

    std::filesystem::path m_scenarioDir;
    std::filesystem::path m_work;
    std::filesystem::path m_prog;
    std::filesystem::path m_lastFile;
    std::map<std::string, bool> m_useReal;
    // Folders made small with `folder ... holds N`: the tmpfs mounts, or the file-size limit in
    // force before one was set.
    std::vector<std::filesystem::path> m_mounts;
    std::optional<rlimit> m_savedFileLimit;
    std::shared_ptr<platform::fake::FakeWorld> m_world;
    std::unique_ptr<platform::Components> m_components;
    std::unique_ptr<rt::VirtualEventLoop> m_loop;
    std::unique_ptr<ui::ScriptedMessageBoxes> m_boxes;
    std::unique_ptr<ui::ScriptedDialogs> m_dialogs;
    std::unique_ptr<ui::AppContext> m_app;
    size_t m_boxesChecked = 0;
    std::string m_lastResult;
    std::map<std::string, std::unique_ptr<ScriptObject>> m_objects;
    std::unique_ptr<LocalHttpServer> m_server;
};

} // namespace scenario
