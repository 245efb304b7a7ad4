#include "CoverDesigner.h"

#include <algorithm>

#include "imagx.h"
#include "runtime/Conversions.h"
#include "runtime/Format.h"
#include "runtime/ResumeNext.h"
#include "runtime/RuntimeError.h"
#include "runtime/Strings.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace cover {

namespace {

// The two mode variables the 1, 4 and 8 bit commands pass: nothing ever assigns
// them.
rt::Integer depthPaletteMode = 0;
rt::Integer depthDitherMode = 0;

std::unique_ptr<platform::ImageControl> makeImage(ui::AppContext &app)
{
    const auto &make = app.components().imageControl;
    return make ? make() : nullptr;
}

// Twips to screen pixels, as the window's scale operations give them.
double pixels(int twips)
{
    return twips / 15.0;
}

rt::Long roundLong(double v)
{
    return rt::CLng(v);
}

rt::Long clampTo(rt::Long v, long high)
{
    if (v.value() < 0)
        return 0;
    if (v.value() > high)
        return static_cast<int32_t>(high);
    return v;
}

} // namespace

CoverDesigner::CoverDesigner(ui::AppContext &app)
    : Window(app, formName)
    , mnufile(*this, "mnufile", "&File")
    , mnunew(*this, "mnunew", "New Image", &mnufile)
    , mnuopen(*this, "mnuopen", "Open", &mnufile)
    , mnusave(*this, "mnusave", "Save File", &mnufile)
    , mnuprintersetup(*this, "mnuprintersetup", "&Printer Setup", &mnufile)
    , mnuexit(*this, "mnuexit", "&Exit", &mnufile)
    , mnuedit(*this, "mnuedit", "&Edit")
    , mnuundo(*this, "mnuundo", "Undo", &mnuedit)
    , mnucopy(*this, "mnucopy", "&Copy", &mnuedit)
    , mnupaste(*this, "mnupaste", "&Paste", &mnuedit)
    , mnuclear(*this, "mnuclear", "&Clear", &mnuedit)
    , mnuundozoom(*this, "mnuundozoom", "Undo Zooming", &mnuedit)
    , Mnucolordepth(*this, "Mnucolordepth", "&Color Depth")
    , mnu24bits(*this, "mnu24bits", "&24 Bits per Pixel", &Mnucolordepth)
    , mnu8bits(*this, "mnu8bits", "&8 Bits per Pixel", &Mnucolordepth)
    , mnu4bits(*this, "mnu4bits", "&4 Bits per Pixel", &Mnucolordepth)
    , mnu1bits(*this, "mnu1bits", "&1 Bits per Pixel", &Mnucolordepth)
    , mnugrayscale(*this, "mnugrayscale", "Gray Scale", &Mnucolordepth)
    , mnutwain(*this, "mnutwain", "&Scanner Settings")
    , mnuopensession(*this, "mnuopensession", "&Open Session", &mnutwain)
    , mnustartscan(*this, "mnustartscan", "&Start Session/Acquire", &mnutwain)
    , mnuclosescan(*this, "mnuclosescan", "&Close Session", &mnutwain)
    , ctToolBar1(*this, "ctToolBar1")
    , ImagXpress1(*this, "ImagXpress1", makeImage(app))
    , ImagXpress2(*this, "ImagXpress2", makeImage(app))
    , ImagXpress3(*this, "ImagXpress3", makeImage(app))
    , ctButton2(*this, "ctButton2")
    , Frame1(*this, "Frame1")
    , lblFileName(*this, "lblFileName")
    , lblFileSize(*this, "lblFileSize")
    , lblHeight(*this, "lblHeight")
    , lblWidth(*this, "lblWidth")
    , lblBPP(*this, "lblBPP")
    , lblColors(*this, "lblColors")
    , lblType(*this, "lblType")
    , lblComp(*this, "lblComp")
    , Frame2(*this, "Frame2")
    , Option1(*this, "Option1")
    , Option2(*this, "Option2")
    , Frame3(*this, "Frame3")
    , Label3(*this, "Label3")
    , ctCombo1(*this, "ctCombo1")
    , Check1(*this, "Check1")
    , Check2(*this, "Check2")
    , Command1(*this, "Command1")
    , StatusBar1(*this, "StatusBar1", 1)
    , CommonDialog1(app)
    , TwainPRO1(app.components().scanner)
    , PrintPRO1(app.components().printer)
    , m_clipboard(app.components().imageClipboard ? app.components().imageClipboard() : nullptr)
{
    setCaption("Easy Coverlet- Velmora Works");
    layOut();

    mnunew.Click = [this] { mnunew_Click(); };
    mnuopen.Click = [this] { mnuopen_Click(); };
    mnusave.Click = [this] { mnusave_Click(); };
    mnuprintersetup.Click = [this] { mnuprintersetup_Click(); };
    mnuexit.Click = [this] { Unload(); };
    mnuundo.Click = [this] { mnuundo_Click(); };
    mnucopy.Click = [this] { mnucopy_Click(); };
    mnupaste.Click = [this] { mnupaste_Click(); };
    mnuclear.Click = [this] { mnuclear_Click(); };
    mnuundozoom.Click = [this] { mnuundozoom_Click(); };
    mnu1bits.Click = [this] { colourDepth(1, depthPaletteMode.value(), depthDitherMode.value()); };
    mnu4bits.Click = [this] { colourDepth(4, depthPaletteMode.value(), depthDitherMode.value()); };
    mnu8bits.Click = [this] { colourDepth(8, depthPaletteMode.value(), depthDitherMode.value()); };
    mnu24bits.Click = [this] { colourDepth(24, 0, 0); };
    mnugrayscale.Click = [this] { colourDepth(std::min(ImagXpress1->IBPP(), 8), 2, 0); };
    mnuopensession.Click = [this] {
        // No trap here: a failure is the run-time error report.
        openSession();
    };
    mnustartscan.Click = [this] { check(TwainPRO1->StartSession()); };
    mnuclosescan.Click = [this] { check(TwainPRO1->CloseSession()); };
    ctButton2.Click = [this] { ctButton2_Click(); };
    Command1.Click = [this] { Command1_Click(); };
    ImagXpress1.DblClick = [this] { ImagXpress1_DblClick(); };
    ImagXpress1.MouseDown = [this](int b, int x, int y) { ImagXpress1_MouseDown(b, x, y); };
    ImagXpress1.MouseMove = [this](int b, int x, int y) { ImagXpress1_MouseMove(b, x, y); };
    ImagXpress1.MouseUp = [this](int b, int x, int y) { ImagXpress1_MouseUp(b, x, y); };
    ctToolBar1.ButtonClick = [this](int index) { ctToolBar1_ButtonClick(index); };
    if (TwainPRO1)
        TwainPRO1->PostScan = componentEvent(std::function<void()>([this] { TwainPRO1_PostScan(); }));
    if (PrintPRO1)
        PrintPRO1->DocName = "PrintPRO Document";
}

void CoverDesigner::layOut()
{
    setGeometry(0, 0, 13200, 8400);
    centreOnScreen();

    ctToolBar1.addItem({"Open Scanning Session", "", "", false});
    ctToolBar1.addItem({"", "", "", true});
    ctToolBar1.addItem({"Aquire Image", "", "", false});
    ctToolBar1.addItem({"", "", "", true});
    ctToolBar1.addItem({"Quick Scanner Check", "", "", false});
    ctToolBar1.addItem({"", "", "", true});
    ctToolBar1.addItem({"Select Source", "", "", false});
    ctToolBar1.addItem({"", "", "", true});
    ctToolBar1.addItem({"Close Session", "", "", false});
    ctToolBar1.setGeometry(0, 0, 13200, 450);
    for (int i : {3, 5, 9})
        ctToolBar1.setButtonEnabled(i, false);

    // The canvas is 416 pixels square.
    ImagXpress1.setGeometry(120, 540, 6240, 6240);
    ImagXpress2.setGeometry(6480, 540, 3000, 2010);
    ImagXpress3.setGeometry(6480, 540, 3000, 2010);
    ImagXpress3.setVisible(false);
    ctButton2.setCaption("Transfer and size>>");
    ctButton2.setGeometry(6480, 2640, 3000, 390);
    ctButton2.setVisible(false);

    Frame1.setFrame(true);
    Frame1.setCaption("Properties");
    Frame1.setGeometry(6480, 3120, 3000, 2940);
    int top = 270;
    for (ui::Label *l : {&lblFileName, &lblFileSize, &lblHeight, &lblWidth, &lblBPP, &lblColors, &lblType, &lblComp}) {
        l->setContainer(&Frame1);
        // The type's words take two lines.
        const int height = l == &lblType ? 525 : 285;
        l->setGeometry(120, top, 2760, height);
        top += height + 15;
    }

    Frame2.setFrame(true);
    Frame2.setCaption("Cover Options");
    Frame2.setGeometry(6480, 6150, 3000, 1000);
    Option1.setContainer(&Frame2);
    Option1.setCaption("Data Flow");
    Option1.setGeometry(120, 270, 2700, 300);
    Option2.setContainer(&Frame2);
    Option2.setCaption("Enable D-Edges");
    Option2.setGeometry(120, 600, 2700, 300);

    Frame3.setFrame(true);
    Frame3.setCaption("Print CD Cover");
    Frame3.setGeometry(9600, 540, 3360, 2700);
    Label3.setContainer(&Frame3);
    Label3.setCaption("Quality-");
    Label3.setGeometry(120, 330, 900, 300);
    ctCombo1.setContainer(&Frame3);
    ctCombo1.setText("XResolution");
    ctCombo1.setGeometry(1080, 300, 2100, 315);
    Check1.setContainer(&Frame3);
    Check1.setCaption("Smart Placement");
    Check1.setGeometry(120, 840, 3000, 300);
    Check2.setContainer(&Frame3);
    Check2.setCaption("Over Network");
    Check2.setGeometry(120, 1200, 3000, 300);
    Command1.setContainer(&Frame3);
    Command1.setCaption("Print Cover<<");
    Command1.setGeometry(120, 1800, 3060, 450);
    Command1.setEnabled(false);

    StatusBar1.setGeometry(0, 7350, 13200, 330);

    // Disabled by design until there is something to act on.
    for (ui::MenuItem *m : {&mnusave, &mnuundo, &mnucopy, &mnupaste, &mnuclear, &mnuundozoom, &mnu24bits, &mnu8bits,
             &mnu4bits, &mnu1bits, &mnugrayscale, &mnuopensession, &mnustartscan, &mnuclosescan})
        m->setEnabled(false);
}

std::string CoverDesigner::workFile() const
{
    return app().appPath() + "\\image-" + rt::numberText(imageNumber.value()) + ".bmp";
}

void CoverDesigner::check(int code)
{
    if (code != 0)
        rt::raise(code, imagx::errorText(code));
}

void CoverDesigner::Form_Load()
{
    rt::ResumeNext step;
    step([&] { setTopmost(true); });
    step([&] { mnunew.setEnabled(false); });
    step([&] {
        for (const char *q : {"Draft", "Low", "Medium", "High"})
            ctCombo1.AddItem(q);
    });
    step([&] { ImagXpress1->setFileName(app().appPath() + "/cdquality.jpg"); });
    step([&] { ImagXpress1->DisplayPropertyA = 13; });
    step([&] { ImagXpress1->DisplayPropertyB = 4; });
    step([&] {
        selLeft = -1;
        selRight = -1;
        selTop = -1;
        selBottom = -1;
        zoomStart = 1.0;
        sessionMark = "0";
    });
}

// ---- The document ----

void CoverDesigner::mnuopen_Click()
{
    rt::ResumeNext step;
    step([&] {
        CommonDialog1.CancelError = true;
        CommonDialog1.Filter = "JPEG (*.jpg)|*.jpg|DCX (*.dcx)|*.dcx|DIB "
                               "(*.dib)|*.dib|EPic (*.pic)|*.pic|ICO (*.ico)|*.ico|"
                               "Bitmap (*.BMP)|*.bmp|Jif (*.jif)|*.jif|PBM "
                               "(*.pbm)|*.pbm|PCX (*.pcx)|*.pcx|PGM (*.pgm)|*.pgm|"
                               "PNG(*.png)|*.png|PPM (*.ppm)|*.ppm|RLE "
                               "(*.rle)|*.rle|TGA (*.tga)|*.tga|TIFF(*.tif)|*.tif|";
        CommonDialog1.DefaultExt = "jpg";
        CommonDialog1.DialogTitle = "Open Image- Velmora Works Image Technology";
    });
    step([&] { CommonDialog1.ShowOpen(); });
    if (step.lastError() == rt::ErrCancel)
        return;
    const std::string name = CommonDialog1.FileName;
    if (name.empty()) {
        step([&] { ImagXpress2->setFileName(app().appPath() + "/velmoraimg.jpg"); });
        return;
    }
    step([&] { sessionMark = name; });
    step([&] { ImagXpress2->setFileName(name); });
    step([&] { ImagXpress3->setFileName(name); });
    step([&] { StatusBar1.setPanel(1, "Opened:" + name); });
    // The canvas still holds what it held: the panel shows it until the transfer.
    step([&] { fillProps(ImagXpress1); });
    step([&] { ImagXpress3->setSaveFileName(workFile()); });
    step([&] { ImagXpress3->SaveFile(); });
    step([&] { app().loop().doEvents(); });
    step([&] { mnusave.setEnabled(true); });
    step([&] { mnunew.setEnabled(true); });
    step([&] { mnuopen.setEnabled(false); });
    step([&] { ctButton2.setVisible(true); });
}

void CoverDesigner::mnunew_Click()
{
    ImagXpress1->setFileName(app().appPath() + "/cdquality.jpg");
    ImagXpress2->setFileName(app().appPath() + "/velmoraimg.jpg");
    ImagXpress3->setFileName("");
    for (ui::MenuItem *m : {&mnuopen, &mnu1bits, &mnu24bits, &mnu4bits, &mnu8bits, &mnugrayscale, &mnuclear, &mnucopy,
             &mnupaste, &mnusave, &mnuundo, &mnuundozoom, &mnunew})
        m->setEnabled(false);
    // Open runs though its entry is disabled now.
    mnuopen_Click();
}

void CoverDesigner::ctButton2_Click()
{
    try {
        ImagXpress1->setFileName(workFile());
        for (ui::MenuItem *m : {&mnu1bits, &mnu24bits, &mnu4bits, &mnu8bits, &mnugrayscale, &mnuclear, &mnucopy,
                 &mnupaste, &mnusave, &mnuundo, &mnuundozoom})
            m->setEnabled(true);
        Command1.setEnabled(true);
        fillProps(ImagXpress1);
        sessionMark = "1";
    } catch (const rt::RuntimeError &) {
    }
}

void CoverDesigner::fillProps(ui::ImageBox &image)
{
    std::string name = image->FileName();
    // Only a backslash separates; a "/" is part of the name.
    if (const auto cut = name.rfind('\\'); cut != std::string::npos)
        name = name.substr(cut + 1);
    const long size = image->FileSize();
    const long width = image->IWidth();
    const long height = image->IHeight();
    const long bpp = image->IBPP();
    lblFileName.setCaption("File Name: " + name);
    lblFileSize.setCaption("File Size: " + rt::numberText(size));
    lblHeight.setCaption("Height: " + rt::numberText(height));
    lblWidth.setCaption("Width: " + rt::numberText(width));
    lblBPP.setCaption("Bits/Pixel: " + rt::numberText(bpp));
    lblColors.setCaption("Unique Colors: " + rt::numberText(image->UniqueColors()));
    static const char *const words[] = {"TGA - Truevision Targa", "PCX -Zsoft", "GIF -CompuServe",
        "TIF - Tagged Image File Format", "BMP, DIB - OS/2 or Windows Bitmap", "WPG - WordPerfect Bitmap",
        "WMF - Windows Metafile.", "JPG, JIF - JFIF Compliant JPEG", "PIC - Pegasus PIC",
        "PNG - Portable Network Graphics", "JPG - Progressive JPEG", "RLE - Run Length Encoded", "TIF - CCITT RLE",
        "TIF - CCITT Group 3 - 1D", "TIF - CCITT Group 4", "TIF - LZW", "TIF - Pack Bits", "TIF - JPEG",
        "TIF - Deflate", "ICO - Windows ICON", "PPM - Portable Pixmap", "PGM - Portable Gray Map",
        "PBM - Portable Bitmap", "DCX - Multipage ZSoft", "PIC - Pegasus Enhanced PIC", "TIF - CCITT Group 3 - 2D"};
    const int type = image->FileType();
    lblType.setCaption(std::string("Type: ") + (type >= 1 && type <= 26 ? words[type - 1] : "Unknown Format"));
    double ratio = 0;
    if (size > 0) {
        const double raw = static_cast<double>(width) * height * (bpp / 8.0);
        ratio = raw / size + 0.05;
    }
    if (ratio <= 1.1)
        lblComp.setCaption("Compression: None");
    else
        lblComp.setCaption("Compression: " + rt::Trim(rt::Format(ratio, "###.0")) + " : 1");
}

void CoverDesigner::mnusave_Click()
{
    try {
        if (ImagXpress2->FileName().empty())
            return;
        CommonDialog1.CancelError = true;
        CommonDialog1.Filter = "JPEG (*.jpg)|*.jpg|";
        CommonDialog1.DefaultExt = "jpg";
        CommonDialog1.FileName = "";
        CommonDialog1.DialogTitle = "Save Image- Velmora Works Image Technology";
        CommonDialog1.ShowSave();
        sessionMark = CommonDialog1.FileName;
        ImagXpress3->setSaveFileName(CommonDialog1.FileName);
        ImagXpress3->SaveFile();
    } catch (const rt::RuntimeError &) {
    }
}

// ---- Image operations ----

void CoverDesigner::colourDepth(int bits, int paletteMode, int ditherMode)
{
    // The template is never converted: the canvas's name is compared exactly.
    if (ImagXpress1->FileName() == app().appPath() + "/cdquality.jpg")
        return;
    ImagXpress1->ColorDepth(bits, paletteMode, ditherMode);
    ImagXpress2->ColorDepth(bits, paletteMode, ditherMode);
    ImagXpress3->ColorDepth(bits, paletteMode, ditherMode);
}

void CoverDesigner::mnuundo_Click()
{
    rt::ResumeNext step;
    step([&] { ImagXpress1->Undo(); });
    step([&] { imagx::UpdateProps(*this, ImagXpress1); });
    // Realising the palette: the view draws from the control's own colours, so a
    // redraw does it.
    step([&] {
        if (ImagXpress1->hWnd() != 0 && ImagXpress1->hPalette() != 0)
            ImagXpress1->Refresh();
    });
}

void CoverDesigner::mnucopy_Click()
{
    ImagXpress1->Copy();
    imagx::UpdateProps(*this, ImagXpress1);
}

void CoverDesigner::mnupaste_Click()
{
    ImagXpress1->setFileName("");
    ImagXpress1->Paste();
}

void CoverDesigner::mnuclear_Click()
{
    if (m_clipboard)
        m_clipboard->clear();
}

void CoverDesigner::mnuundozoom_Click()
{
    // A path in sessionMark is error 13 here, and nothing traps it.
    const bool marked = rt::CDbl(sessionMark) != 0;
    if (marked && !ImagXpress1->FileName().empty()) {
        selLeft = -1;
        ImagXpress1->ZoomToFactor(1.0);
    }
}

void CoverDesigner::ImagXpress1_DblClick()
{
    mnuundozoom_Click();
}

void CoverDesigner::ImagXpress1_MouseDown(int, int x, int y)
{
    if (rt::CDbl(sessionMark) != 0) {
        const double zoom = ImagXpress1->IPZoomF();
        selLeft = roundLong((pixels(x) + ImagXpress1->ScrollX()) / zoom);
        selTop = roundLong((pixels(y) + ImagXpress1->ScrollY()) / zoom);
    }
}

void CoverDesigner::ImagXpress1_MouseMove(int button, int x, int y)
{
    rt::ResumeNext step;
    step.If([&] { return rt::CDbl(sessionMark) != 0 && !ImagXpress1->FileName().empty(); },
        [&] {
            m_busy = true;
            const double px = pixels(x);
            const double py = pixels(y);
            const double viewW = pixels(ImagXpress1.Width());
            const double viewH = pixels(ImagXpress1.Height());
            step([&] {
                if (ImagXpress1->ScrollY() >= 1 && py < 10) {
                    if (ImagXpress1->ScrollY() >= 5)
                        ImagXpress1->setScrollY(ImagXpress1->ScrollY() - 5);
                    else
                        ImagXpress1->setScrollY(0);
                }
            });
            step([&] {
                if (ImagXpress1->ScrollX() >= 1 && px < 10) {
                    if (ImagXpress1->ScrollX() >= 5)
                        ImagXpress1->setScrollX(ImagXpress1->ScrollX() - 5);
                    else
                        ImagXpress1->setScrollX(0);
                }
            });
            step([&] {
                const double limit = ImagXpress1->IPZoomF() * ImagXpress1->IHeight() - viewH;
                if (limit + 16 > ImagXpress1->ScrollY() && py > viewH - 26) {
                    if (limit + 11 > ImagXpress1->ScrollY())
                        ImagXpress1->setScrollY(ImagXpress1->ScrollY() + 5);
                    else
                        ImagXpress1->setScrollY(roundLong(limit + 16).value());
                }
            });
            step([&] {
                const double limit = ImagXpress1->IPZoomF() * ImagXpress1->IWidth() - viewW;
                if (limit + 16 > ImagXpress1->ScrollX() && px > viewW - 26) {
                    if (limit + 11 > ImagXpress1->ScrollX())
                        ImagXpress1->setScrollX(ImagXpress1->ScrollX() + 5);
                    else
                        ImagXpress1->setScrollX(roundLong(limit + 16).value());
                }
            });
            step([&] {
                if (button == ui::LeftButton && selLeft.value() >= 0) {
                    if (selRight.value() > -1)
                        ImagXpress1->EraseRubberBand();
                    const double zoom = ImagXpress1->IPZoomF();
                    selRight = roundLong((px + ImagXpress1->ScrollX()) / zoom);
                    selBottom = roundLong((py + ImagXpress1->ScrollY()) / zoom);
                    selRight = clampTo(selRight, ImagXpress1->IWidth() - 1);
                    selBottom = clampTo(selBottom, ImagXpress1->IHeight() - 1);
                    ImagXpress1->DrawRubberBand(
                        selLeft.value(), selTop.value(), selRight.value(), selBottom.value(), 0xFF0000, true);
                }
            });
            step([&] { app().loop().doEvents(); });
            m_busy = false;
        });
}

void CoverDesigner::ImagXpress1_MouseUp(int, int x, int y)
{
    // Both tests are made, so a path in sessionMark is error 13 even on an empty
    // canvas.
    const bool emptyCanvas = ImagXpress1->FileName().empty();
    const bool unmarked = rt::CDbl(sessionMark) == 0;
    if (emptyCanvas || unmarked)
        return;
    const double zoom = ImagXpress1->IPZoomF();
    selRight = clampTo(roundLong((pixels(x) + ImagXpress1->ScrollX()) / zoom), ImagXpress1->IWidth() - 1);
    selBottom = clampTo(roundLong((pixels(y) + ImagXpress1->ScrollY()) / zoom), ImagXpress1->IHeight() - 1);
    if (selLeft.value() > selRight.value())
        std::swap(selLeft, selRight);
    if (selTop.value() > selBottom.value())
        std::swap(selTop, selBottom);
    if (selLeft.value() == selRight.value() || selTop.value() == selBottom.value() || selLeft.value() <= -1
        || selRight.value() <= -1)
        return;
    ImagXpress1->EraseRubberBand();
    const double viewH = pixels(ImagXpress1.Height());
    const double zy = (viewH - 16) / (selBottom.value() - selTop.value());
    const double viewW = pixels(ImagXpress1.Width());
    const double zx = (viewW - 16) / (selRight.value() - selLeft.value());
    const double l = selLeft.value(), r = selRight.value(), t = selTop.value(), b = selBottom.value();
    if (zx < zy) {
        if (!(zx > 10)) {
            ImagXpress1->ZoomToFactor(zx);
            ImagXpress1->setScrollY(roundLong((t - ((viewH - 16) - (b - t) * zx) / (2 * zx)) * zx).value());
            ImagXpress1->setScrollX(roundLong(l * zx).value());
            return;
        }
    } else {
        if (!(zy > 10)) {
            ImagXpress1->ZoomToFactor(zy);
            ImagXpress1->setScrollY(roundLong(t * zy).value());
            ImagXpress1->setScrollX(roundLong((l - ((viewW - 16) - (r - l) * zy) / (2 * zy)) * zy).value());
            return;
        }
    }
    ui::MsgBox(app(), "Error: Can't zoom > x10");
    ImagXpress1->ZoomToFactor(1.0);
}

// ---- The scanner ----

void CoverDesigner::openSession()
{
    check(TwainPRO1->OpenSession());
    for (int i : {3, 5, 9})
        ctToolBar1.setButtonEnabled(i, true);
    mnustartscan.setEnabled(true);
    mnuclosescan.setEnabled(true);
}

void CoverDesigner::ctToolBar1_ButtonClick(int index)
{
    rt::ResumeNext step;
    switch (index) {
    case 1:
        step([&] { TwainPRO1->OpenSession(); });
        step([&] {
            for (int i : {3, 5, 9})
                ctToolBar1.setButtonEnabled(i, true);
        });
        step([&] { mnustartscan.setEnabled(true); });
        step([&] { mnuclosescan.setEnabled(true); });
        break;
    case 3: step([&] { check(TwainPRO1->StartSession()); }); break;
    // The separator at 4 answers as "Select Source" does; "Quick Scanner Check"
    // (5) has no handler.
    case 4:
    case 7:
        step([&] { check(TwainPRO1->CloseSession()); });
        step([&] { check(TwainPRO1->SelectSource()); });
        break;
    case 9: step([&] { check(TwainPRO1->CloseSession()); }); break;
    default: break;
    }
}

void CoverDesigner::TwainPRO1_PostScan()
{
    const std::string path = workFile();
    TwainPRO1->SaveFile(path);
    ImagXpress2->setFileName(path);
    ImagXpress3->setFileName(path);
    app().loop().doEvents();
}

// ---- Printing ----

void CoverDesigner::mnuprintersetup_Click()
{
    PrintPRO1->PrintDialog();
}

void CoverDesigner::Command1_Click()
{
    platform::CoverPrintJob job;
    const std::string quality = ctCombo1.Text();
    // The quality words name resolutions; the combo's design text chooses none,
    // which prints at Low.
    job.dpi = quality == "Draft" ? 150 : quality == "Medium" ? 600 : quality == "High" ? 1200 : 300;
    job.smartPlacement = Check1.Value() == 1;
    job.overNetwork = Check2.Value() == 1;
    job.picture = ImagXpress1->pixels();
    if (job.picture.empty())
        return;
    if (job.overNetwork && PrintPRO1->networkPrinters().empty()) {
        ui::MsgBox(app(), "No network printer is known to the print system.", ui::vbExclamation,
            "Velmora Works-Error Notification");
        return;
    }
    const int code = PrintPRO1->PrintCover(job);
    if (code != 0)
        ui::MsgBox(app(), "The printer refused the cover (error " + rt::numberText(code) + ").", ui::vbExclamation,
            "Velmora Works-Error Notification");
}

std::optional<std::string> CoverDesigner::member(const std::string &name) const
{
    if (name == "imageNumber")
        return rt::numberText(imageNumber.value());
    if (name == "selLeft")
        return rt::numberText(selLeft.value());
    if (name == "selRight")
        return rt::numberText(selRight.value());
    if (name == "selTop")
        return rt::numberText(selTop.value());
    if (name == "selBottom")
        return rt::numberText(selBottom.value());
    if (name == "zoomStart")
        return rt::numberText(zoomStart);
    if (name == "sessionMark")
        return sessionMark;
    if (name == "workFile")
        return workFile();
    return Window::member(name);
}

} // namespace cover
