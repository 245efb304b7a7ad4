// The choice of the recorder: the engine's own pick at every connection, and the manual path
// through the device list, the model list and "CD-Adapt".
#include "WriterModels.h"
#include "frmMain.h"
#include "runtime/Conversions.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace shell {

void frmMain::connectWriter()
{
    Text1.setText("");
    if (ACDWRITE1->InitEngine() > 0) {
        ui::MsgBox(app(), "Can\xC2\xB4t initialize ASPI or no CD-recorder found! Abort.");
        rt::endProgram();
    }
    // The list isn't cleared: every run appends the devices once more.
    const int count = ACDWRITE1->DeviceCount();
    for (int i = 1; i <= count; ++i)
        List1.AddItem(ACDWRITE1->DeviceName(i - 1));
    for (int i = 1; i <= count; ++i) {
        ACDWRITE1->SelectDevice(i - 1);
        const int type = ACDWRITE1->DeviceDriverType();
        if (type >= 1 && type < 100) {
            ACDWRITE1->SetDriverType(type);
            Text1.setText(ACDWRITE1->DeviceName(i - 1));
            Text2.setText(std::to_string(type));
            break;
        }
    }
    if (Text1.Text().empty()) {
        List1.setEnabled(true);
        ui::MsgBox(app(), "Please select your CD writer in the top list box left with a double click.");
    }
}

void frmMain::writerInit()
{
    connectWriter();
    ACDWRITE1->setCloseDiscAfterTrack(false);
    ACDWRITE1->setCloseSessionAfterTrack(false);
    ACDWRITE1->setTestWrite(false);
    ACDWRITE1->setWriteSpeed(8);
}

void frmMain::startme_up()
{
    connectWriter();
    ACDWRITE1->setTestWrite(false);
    ACDWRITE1->setWriteSpeed(8);
}

void frmMain::List1_DblClick()
{
    // Every selected row is taken in turn; the last one stays current.
    for (int i = 0; i < List1.ListCount(); ++i) {
        if (!List1.Selected(i))
            continue;
        Text1.setText(List1.List(i));
        List1.setEnabled(false);
        // A row of a later round of writerInit gives an index beyond the devices, as it stands.
        ACDWRITE1->SelectDevice(i);
        Text2.setEnabled(true);
        ctButton8.setEnabled(true);
        ui::MsgBox(app(), "Please insert your writer type and then press \"manual set\".");
    }
}

void frmMain::cdlist_Click()
{
    // A model pick only shows its driver type; the engine is told by "CD-Adapt".
    if (auto type = driverTypeOfModel(cdlist.Text()))
        Text2.setText(std::to_string(*type));
}

void frmMain::ctButton8_Click()
{
    // Text that is no number is a type mismatch nobody catches. 12 is refused, 11 taken.
    const double type = rt::CDbl(Text2.Text());
    if (!(type > 0 && type < 12)) {
        ui::MsgBox(app(), "Please enter a valid type!", ui::vbExclamation);
        return;
    }
    ACDWRITE1->SetDriverType(rt::CInt(type).value());
    ctButton8.setEnabled(false);
    Text2.setEnabled(false);
}

} // namespace shell
