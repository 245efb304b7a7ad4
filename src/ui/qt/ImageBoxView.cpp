#include "ImageBoxView.h"

#include <QEvent>
#include <QImage>
#include <QPainter>
#include <QPointer>
#include <QWidget>

#include "WindowView.h"
#include "ui/ImageBox.h"

namespace uiqt {

namespace {

class ImageWidget : public QWidget {
public:
    using QWidget::QWidget;

    QImage picture;
    double zoom = 1.0;
    int scrollX = 0;
    int scrollY = 0;
    platform::ImageControl::RubberBand band;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter p(this);
        p.fillRect(rect(), QColor(0x80, 0x80, 0x80));
        if (!picture.isNull()) {
            const QRectF target(-scrollX, -scrollY, picture.width() * zoom, picture.height() * zoom);
            p.setRenderHint(QPainter::SmoothPixmapTransform, zoom < 1.0);
            p.drawImage(target, picture);
        }
        if (band.shown) {
            const int l = std::min(band.left, band.right), r = std::max(band.left, band.right);
            const int t = std::min(band.top, band.bottom), b = std::max(band.top, band.bottom);
            const QRectF frame(l * zoom - scrollX, t * zoom - scrollY, (r - l) * zoom, (b - t) * zoom);
            p.setPen(QPen(QColor::fromRgb(band.colour), 1));
            p.setBrush(Qt::NoBrush);
            p.drawRect(frame);
        }
    }
};

class ImageBoxView : public ControlView {
public:
    ImageBoxView(ui::ImageBox &image, WindowView &window)
        : ControlView(image, window)
        , m_widget(new ImageWidget(window.canvas()))
    {
        m_widget->setMouseTracking(true);
        setWidget(m_widget);
    }

protected:
    void apply() override
    {
        if (!m_widget)
            return;
        auto &box = *static_cast<ui::ImageBox *>(m_control);
        platform::ImageControl *image = box.image();
        if (!image)
            return;
        const unsigned version = image->pictureVersion();
        if (version != m_version || m_first) {
            m_first = false;
            m_version = version;
            const platform::ImagePixels px = image->pixels();
            if (px.empty()) {
                m_widget->picture = QImage();
            } else {
                QImage copy(reinterpret_cast<const uchar *>(px.argb.data()), px.width, px.height, px.width * 4,
                    QImage::Format_ARGB32);
                m_widget->picture = copy.copy();
            }
        }
        m_widget->zoom = image->IPZoomF();
        m_widget->scrollX = image->ScrollX();
        m_widget->scrollY = image->ScrollY();
        m_widget->band = image->rubberBand();
        m_widget->update();
    }

    bool widgetEvent(QWidget *, QEvent *event) override
    {
        if (event->type() == QEvent::MouseButtonDblClick && m_control) {
            m_control->userDblClick();
            return true;
        }
        return false;
    }

    void detached() override { }

private:
    QPointer<ImageWidget> m_widget;
    unsigned m_version = 0;
    bool m_first = true;
};

} // namespace

std::unique_ptr<ControlView> makeImageBoxView(ui::ImageBox &image, WindowView &window)
{
    return std::make_unique<ImageBoxView>(image, window);
}

} // namespace uiqt
