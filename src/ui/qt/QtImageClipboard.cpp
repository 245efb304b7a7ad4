#include "QtImageClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>

#include <cstring>

namespace uiqt {

namespace {

class QtImageClipboard : public platform::ImageClipboard {
public:
    bool setPicture(const platform::ImagePixels &p) override
    {
        QClipboard *c = QGuiApplication::clipboard();
        if (!c || p.empty())
            return false;
        const QImage image(
            reinterpret_cast<const uchar *>(p.argb.data()), p.width, p.height, p.width * 4, QImage::Format_ARGB32);
        c->setImage(image.copy());
        return true;
    }

    platform::ImagePixels picture() const override
    {
        platform::ImagePixels p;
        QClipboard *c = QGuiApplication::clipboard();
        if (!c)
            return p;
        const QImage image = c->image().convertToFormat(QImage::Format_ARGB32);
        if (image.isNull())
            return p;
        p.width = image.width();
        p.height = image.height();
        p.argb.resize(static_cast<size_t>(p.width) * p.height);
        for (int y = 0; y < p.height; ++y)
            std::memcpy(p.argb.data() + static_cast<size_t>(y) * p.width, image.constScanLine(y),
                static_cast<size_t>(p.width) * 4);
        return p;
    }

    void clear() override
    {
        if (QClipboard *c = QGuiApplication::clipboard())
            c->clear();
    }
};

} // namespace

std::shared_ptr<platform::ImageClipboard> makeQtImageClipboard()
{
    return std::make_shared<QtImageClipboard>();
}

} // namespace uiqt
