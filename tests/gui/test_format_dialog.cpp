// The wave format chooser on the formats the real converter offers: its title, the two lists,
// the preselected current choice, tag changes, OK and Cancel through the dialog service, and a
// photograph of it in the build's screenshot folder.
#include <filesystem>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include "QtTestEnvironment.h"
#include "platform/helper/WaveFormatText.h"
#include "platform/media/WritableWaveFormats.h"
#include "ui/qt/QtDialogs.h"
#include "ui/qt/QtWaveFormatDialog.h"

#ifndef BRASSWICK_SCREENSHOT_DIR
#error "BRASSWICK_SCREENSHOT_DIR must name the folder the pictures go to"
#endif

namespace fs = std::filesystem;

namespace {

const auto *const environment = ::testing::AddGlobalTestEnvironment(new QtTestEnvironment("gui_format_dialog"));

ui::FileDialogRequest chooserRequest(const std::string &current, const std::string &title = "")
{
    ui::FileDialogRequest r;
    r.kind = ui::FileDialogRequest::Kind::WaveFormat;
    r.title = title;
    r.fileName = current;
    for (const platform::WaveFormat &f : platform::media::writableWaveFormats())
        r.choices.push_back(platform::waveFormatText(f));
    return r;
}

std::vector<std::string> itemsOf(const QComboBox *box)
{
    std::vector<std::string> items;
    for (int i = 0; i < box->count(); ++i)
        items.push_back(box->itemText(i).toStdString());
    return items;
}

int distinctColours(const QImage &image, int enough)
{
    std::set<QRgb> seen;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            seen.insert(image.pixel(x, y));
            if (static_cast<int>(seen.size()) >= enough)
                return enough;
        }
    return static_cast<int>(seen.size());
}

TEST(FormatDialog, ShowsTheCurrentChoiceAndIsPhotographed)
{
    uiqt::QtWaveFormatDialog dialog(chooserRequest("PCM, 22050 Hz, 16 bit, mono"));
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_EQ(dialog.windowTitle().toStdString(), "Select...");
    EXPECT_TRUE(dialog.isModal());
    EXPECT_EQ(itemsOf(dialog.formatList()),
              (std::vector<std::string>{"PCM", "MS ADPCM", "IEEE float", "A-law", "u-law", "IMA ADPCM", "GSM 6.10"}));
    EXPECT_EQ(dialog.formatList()->currentText().toStdString(), "PCM");
    EXPECT_EQ(dialog.attributesList()->currentText().toStdString(), "22050 Hz, 16 bit, mono");
    EXPECT_EQ(dialog.attributesList()->count(), 56);
    EXPECT_EQ(dialog.attributesList()->itemText(0).toStdString(), "8000 Hz, 8 bit, mono");
    EXPECT_EQ(dialog.chosen(), "PCM, 22050 Hz, 16 bit, mono");

    std::set<std::string> labels;
    for (const QLabel *label : dialog.findChildren<QLabel *>())
        labels.insert(label->text().toStdString());
    EXPECT_EQ(labels, (std::set<std::string>{"&Format:", "&Attributes:"}));
    // Nothing is cut: the list is as wide as its longest entry.
    const QFontMetrics metrics(dialog.attributesList()->font());
    EXPECT_GE(dialog.attributesList()->width(), metrics.horizontalAdvance(QStringLiteral("48000 Hz, 32 bit, stereo")));

    fs::create_directories(BRASSWICK_SCREENSHOT_DIR);
    const std::string path = (fs::path(BRASSWICK_SCREENSHOT_DIR) / "format-dialog.png").string();
    std::error_code ec;
    fs::remove(path, ec);
    QTest::qWait(100);
    const QImage image = dialog.grab().toImage();
    ASSERT_TRUE(image.save(QString::fromStdString(path)));
    EXPECT_GT(distinctColours(image.convertToFormat(QImage::Format_RGB32), 32), 10) << "the picture is nearly one colour";
    std::cout << "[ picture ] " << path << " (" << image.width() << "x" << image.height() << ")\n";
}

TEST(FormatDialog, AnotherTagListsItsOwnAttributes)
{
    uiqt::QtWaveFormatDialog dialog(chooserRequest("A-law, 22050 Hz, 8 bit, mono"));
    EXPECT_EQ(dialog.chosen(), "A-law, 22050 Hz, 8 bit, mono");
    // The same attributes where the new tag has them.
    dialog.formatList()->setCurrentText(QStringLiteral("u-law"));
    EXPECT_EQ(dialog.chosen(), "u-law, 22050 Hz, 8 bit, mono");
    EXPECT_EQ(dialog.attributesList()->count(), 14);
    // Otherwise its first.
    dialog.formatList()->setCurrentText(QStringLiteral("IMA ADPCM"));
    EXPECT_EQ(dialog.chosen(), "IMA ADPCM, 8000 Hz, 4 bit, mono");
    dialog.formatList()->setCurrentText(QStringLiteral("GSM 6.10"));
    EXPECT_EQ(itemsOf(dialog.attributesList()), std::vector<std::string>{"8000 Hz, mono"});
    EXPECT_EQ(dialog.chosen(), "GSM 6.10, 8000 Hz, mono");
    dialog.attributesList()->setCurrentIndex(0);
    dialog.formatList()->setCurrentText(QStringLiteral("IEEE float"));
    dialog.attributesList()->setCurrentText(QStringLiteral("48000 Hz, 32 bit, stereo"));
    EXPECT_EQ(dialog.chosen(), "IEEE float, 48000 Hz, 32 bit, stereo");
}

TEST(FormatDialog, NoCurrentChoiceStartsAtTheFirst)
{
    // The batch asks with no current format.
    uiqt::QtWaveFormatDialog dialog(chooserRequest(""));
    EXPECT_EQ(dialog.chosen(), "PCM, 8000 Hz, 8 bit, mono");
    uiqt::QtWaveFormatDialog unknown(chooserRequest("PCM, 12345 Hz, 16 bit, mono"));
    EXPECT_EQ(unknown.chosen(), "PCM, 8000 Hz, 8 bit, mono");
    ui::FileDialogRequest none = chooserRequest("");
    none.choices.clear();
    uiqt::QtWaveFormatDialog empty(none);
    EXPECT_EQ(empty.chosen(), "");
    EXPECT_FALSE(empty.okButton()->isEnabled());
}

// Presses a button of the modal dialog once it is up.
void pressWhenUp(const QString &button, std::string *title)
{
    QTimer::singleShot(50, [button, title] {
        auto *dialog = dynamic_cast<uiqt::QtWaveFormatDialog *>(QApplication::activeModalWidget());
        if (!dialog) {
            pressWhenUp(button, title);
            return;
        }
        *title = dialog->windowTitle().toStdString();
        dialog->formatList()->setCurrentText(QStringLiteral("MS ADPCM"));
        dialog->attributesList()->setCurrentText(QStringLiteral("44100 Hz, 4 bit, stereo"));
        for (QPushButton *b : dialog->findChildren<QPushButton *>()) {
            if (b->text().remove(QLatin1Char('&')) == button)
                QTest::mouseClick(b, Qt::LeftButton);
        }
    });
}

TEST(FormatDialog, OkGivesTheChoiceThroughTheDialogService)
{
    uiqt::QtDialogs dialogs;
    std::string title;
    pressWhenUp(QStringLiteral("OK"), &title);
    const auto result = dialogs.run(chooserRequest("PCM, 44100 Hz, 16 bit, stereo", "Sound format"));
    EXPECT_EQ(title, "Sound format");
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(*result, "MS ADPCM, 44100 Hz, 4 bit, stereo");
}

TEST(FormatDialog, CancelGivesNothing)
{
    uiqt::QtDialogs dialogs;
    std::string title;
    pressWhenUp(QStringLiteral("Cancel"), &title);
    EXPECT_FALSE(dialogs.run(chooserRequest("")).has_value());
    EXPECT_EQ(title, "Select...");
}

} // namespace
