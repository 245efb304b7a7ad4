#include "QtCoverPrinter.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include <QApplication>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>

namespace platform::printer {

namespace {

constexpr double CoverMm = 120.0;

// Printing needs Qt's GUI side; a process without one (the scenario driver)
// gets an off-screen one.
void ensureGuiApplication()
{
    if (QCoreApplication::instance())
        return;
    if (!std::getenv("QT_QPA_PLATFORM"))
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static int argc = 1;
    static char name[] = "brasswick";
    static char *argv[] = {name, nullptr};
    new QApplication(argc, argv);
}

class QtCoverPrinter : public Printer {
public:
    explicit QtCoverPrinter(Options o)
        : m_options(std::move(o))
    {
        ensureGuiApplication();
    }

    int PrintDialog() override
    {
        if (!m_options.pdfFolder.empty())
            return 0;
        if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
            return 1;
        QPrintDialog dialog(&m_printer);
        dialog.setWindowTitle(QString::fromStdString(DocName));
        return dialog.exec() == QDialog::Accepted ? 0 : 1;
    }

    int PrintCover(const CoverPrintJob &job) override
    {
        if (job.picture.empty())
            return -1;
        QPrinter &printer = m_printer;
        printer.setDocName(QString::fromStdString(DocName));
        printer.setFullPage(true);
        printer.setResolution(job.dpi);
        printer.setPageSize(QPageSize(QSizeF(CoverMm, CoverMm), QPageSize::Millimeter, QStringLiteral("CD cover")));
        printer.setPageMargins(QMarginsF(0, 0, 0, 0), QPageLayout::Millimeter);
        if (!m_options.pdfFolder.empty()) {
            std::error_code ec;
            std::filesystem::create_directories(m_options.pdfFolder, ec);
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(QString::fromStdString(
                (m_options.pdfFolder / ("cover-" + std::to_string(++m_jobs) + ".pdf")).string()));
        } else if (job.overNetwork) {
            const auto names = cupsNetworkPrinters();
            if (names.empty())
                return -4;
            printer.setPrinterName(QString::fromStdString(names.front()));
        }
        QPainter painter;
        if (!painter.begin(&printer))
            return -2;
        const double cover = CoverMm / 25.4 * printer.resolution();
        const QImage image(reinterpret_cast<const uchar *>(job.picture.argb.data()), job.picture.width,
            job.picture.height, job.picture.width * 4, QImage::Format_ARGB32);
        const Placement p = placePicture(
            job.picture.width, job.picture.height, job.pictureDpi, printer.resolution(), cover, job.smartPlacement);
        painter.setClipRect(QRectF(0, 0, cover, cover));
        painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
        painter.drawImage(QRectF(p.x, p.y, p.width, p.height), image);
        // Crop marks: 5 mm lines along the edges at each corner.
        const double mark = 5.0 / 25.4 * printer.resolution();
        QPen pen(Qt::black);
        pen.setWidthF(std::max(1.0, 0.2 / 25.4 * printer.resolution()));
        painter.setPen(pen);
        for (double cx : {0.0, cover})
            for (double cy : {0.0, cover}) {
                const double dx = cx == 0 ? mark : -mark;
                const double dy = cy == 0 ? mark : -mark;
                painter.drawLine(QPointF(cx, cy), QPointF(cx + dx, cy));
                painter.drawLine(QPointF(cx, cy), QPointF(cx, cy + dy));
            }
        if (!painter.end())
            return -3;
        return printer.printerState() == QPrinter::Error ? -3 : 0;
    }

    std::vector<std::string> networkPrinters() const override
    {
        if (!m_options.pdfFolder.empty())
            return {"PDF"};
        return cupsNetworkPrinters();
    }

private:
    Options m_options;
    QPrinter m_printer {QPrinter::HighResolution};
    int m_jobs = 0;
};

} // namespace

Placement placePicture(
    int pictureWidth, int pictureHeight, double pictureDpi, int printDpi, double coverPixels, bool smart)
{
    Placement p;
    if (pictureWidth <= 0 || pictureHeight <= 0)
        return p;
    if (smart) {
        const double scale = std::min(coverPixels / pictureWidth, coverPixels / pictureHeight);
        p.width = pictureWidth * scale;
        p.height = pictureHeight * scale;
        p.x = (coverPixels - p.width) / 2;
        p.y = (coverPixels - p.height) / 2;
    } else {
        // Its own size, from the corner; what passes the cover's edge is cut off.
        const double dpi = pictureDpi > 0 ? pictureDpi : 96.0;
        p.width = pictureWidth / dpi * printDpi;
        p.height = pictureHeight / dpi * printDpi;
    }
    return p;
}

std::vector<std::string> cupsNetworkPrinters()
{
    std::vector<std::string> names;
    FILE *pipe = ::popen("LC_ALL=C timeout 5 lpstat -v 2>/dev/null", "r");
    if (!pipe)
        return names;
    std::array<char, 1024> line {};
    while (std::fgets(line.data(), line.size(), pipe)) {
        // "device for NAME: URI"
        std::string s(line.data());
        const std::string lead = "device for ";
        const auto colon = s.find(": ");
        if (s.rfind(lead, 0) != 0 || colon == std::string::npos)
            continue;
        const std::string name = s.substr(lead.size(), colon - lead.size());
        const std::string uri = s.substr(colon + 2);
        for (const char *scheme : {"ipp:", "ipps:", "http:", "https:", "socket:", "lpd:", "smb:", "dnssd:"})
            if (uri.rfind(scheme, 0) == 0) {
                names.push_back(name);
                break;
            }
    }
    ::pclose(pipe);
    return names;
}

std::unique_ptr<Printer> makeQtCoverPrinter(const Options &options)
{
    // Before the printer object is made.
    ensureGuiApplication();
    return std::make_unique<QtCoverPrinter>(options);
}

} // namespace platform::printer
