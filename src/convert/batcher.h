#pragma once

#include "MMACMX.h"
#include "platform/Components.h"
#include "platform/helper/MMHelper.h"
#include "runtime/Integer.h"
#include "ui/Button.h"
#include "ui/CommonDialog.h"
#include "ui/ListBox.h"
#include "ui/Meter.h"
#include "ui/Window.h"

namespace convert {

// The batch converter: a list of wave files, each converted into one chosen format beside its
// source with "_acm" in its name, one at a time: SrcFile -> Trigger -> ACMConverter -> DstFile.
class batcher : public ui::Window {
public:
    static constexpr const char *formName = "batcher";
    explicit batcher(ui::AppContext &app);

    void Form_Load() override;
    // Refused while the chain is open; the run goes on.
    bool Form_QueryUnload() override;

    // Starts the conversion of one entry of the list.
    void ConvertItem(rt::Integer index);

    std::optional<std::string> member(const std::string &name) const override;
    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // Fields.
    rt::Integer ItemIndex = 0;
    bool StopRequested = false;

    ui::ListBox ListBox;
    ui::Button btnFile;
    ui::Button btnStart;
    ui::Button btnStop;
    ui::Meter Gauge;

    // The wave open dialog (`MMWaveOpenDialogX`), the format chooser and the helper.
    ui::CommonDialog WaveOpenDialog;
    MMACMX ACM;
    platform::MMHelper Helper;

    // The chain, wired as the design stores it.
    platform::Component<platform::WaveFile> SrcFile;
    platform::Component<platform::Trigger> Trigger;
    platform::Component<platform::FormatConverter> ACMConverter;
    platform::Component<platform::WaveFile> DstFile;

private:
    void layOut();
    void wireChain();
    void btnFile_Click();
    void btnStart_Click();
    void btnStop_Click();
    void Trigger_Started();
    void Trigger_BufferDone();
    void Trigger_Stopped();
    void Trigger_Closed();
    void DstFile_WriteFailed();
};

} // namespace convert
