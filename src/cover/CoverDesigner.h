#pragma once

#include <memory>
#include <string>

#include "platform/Components.h"
#include "runtime/Integer.h"
#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/ComboBox.h"
#include "ui/CommonDialog.h"
#include "ui/ImageBox.h"
#include "ui/Label.h"
#include "ui/MenuItem.h"
#include "ui/StatusBar.h"
#include "ui/ToolBar.h"
#include "ui/Window.h"

namespace cover {

// The cover designer: a picture comes from a file or a scanner through one work
// file into the preview and the hidden work image, is transferred to the cover
// canvas, converted, zoomed by a selection, saved and printed.
class CoverDesigner : public ui::Window {
public:
    static constexpr const char *formName = "CoverDesigner";
    explicit CoverDesigner(ui::AppContext &app);

    void Form_Load() override;

    std::optional<std::string> member(const std::string &name) const override;

    // Fields.
    rt::Long imageNumber = 0;
    rt::Long selLeft = -1;
    rt::Long selRight = -1;
    rt::Long selTop = -1;
    rt::Long selBottom = -1;
    double zoomStart = 1.0;
    std::string sessionMark = "0";

    // Menus.
    ui::MenuItem mnufile;
    ui::MenuItem mnunew;
    ui::MenuItem mnuopen;
    ui::MenuItem mnusave;
    ui::MenuItem mnuprintersetup;
    ui::MenuItem mnuexit;
    ui::MenuItem mnuedit;
    ui::MenuItem mnuundo;
    ui::MenuItem mnucopy;
    ui::MenuItem mnupaste;
    ui::MenuItem mnuclear;
    ui::MenuItem mnuundozoom;
    ui::MenuItem Mnucolordepth;
    ui::MenuItem mnu24bits;
    ui::MenuItem mnu8bits;
    ui::MenuItem mnu4bits;
    ui::MenuItem mnu1bits;
    ui::MenuItem mnugrayscale;
    ui::MenuItem mnutwain;
    ui::MenuItem mnuopensession;
    ui::MenuItem mnustartscan;
    ui::MenuItem mnuclosescan;

    ui::ToolBar ctToolBar1;
    ui::ImageBox ImagXpress1;
    ui::ImageBox ImagXpress2;
    ui::ImageBox ImagXpress3;
    ui::Button ctButton2;
    ui::Label Frame1;
    ui::Label lblFileName;
    ui::Label lblFileSize;
    ui::Label lblHeight;
    ui::Label lblWidth;
    ui::Label lblBPP;
    ui::Label lblColors;
    ui::Label lblType;
    ui::Label lblComp;
    ui::Label Frame2;
    ui::CheckBox Option1;
    ui::CheckBox Option2;
    ui::Label Frame3;
    ui::Label Label3;
    ui::ComboBox ctCombo1;
    ui::CheckBox Check1;
    ui::CheckBox Check2;
    ui::Button Command1;
    ui::StatusBar StatusBar1;
    ui::CommonDialog CommonDialog1;

    platform::Component<platform::Scanner> TwainPRO1;
    platform::Component<platform::Printer> PrintPRO1;

    // The work file every opened or scanned picture goes through.
    std::string workFile() const;

private:
    void layOut();
    void fillProps(ui::ImageBox &image);
    void colourDepth(int bits, int paletteMode, int ditherMode);
    // A failing scanner or printer call, as the control raises it.
    static void check(int code);

    void mnunew_Click();
    void mnuopen_Click();
    void mnusave_Click();
    void mnuprintersetup_Click();
    void mnuundo_Click();
    void mnucopy_Click();
    void mnupaste_Click();
    void mnuclear_Click();
    void mnuundozoom_Click();
    void ctButton2_Click();
    void Command1_Click();
    void ImagXpress1_DblClick();
    void ImagXpress1_MouseDown(int button, int x, int y);
    void ImagXpress1_MouseMove(int button, int x, int y);
    void ImagXpress1_MouseUp(int button, int x, int y);
    void ctToolBar1_ButtonClick(int index);
    void openSession();
    void TwainPRO1_PostScan();

    std::shared_ptr<platform::ImageClipboard> m_clipboard;
    bool m_busy = false;
};

} // namespace cover
