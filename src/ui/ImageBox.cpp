#include "ImageBox.h"

#include <sstream>

#include "runtime/Conversions.h"
#include "runtime/RuntimeError.h"

namespace ui {

ImageBox::ImageBox(Window &owner, std::string name, std::unique_ptr<platform::ImageControl> image)
    : Control(owner, std::move(name))
    , m_image(std::move(image))
{
    if (m_image)
        m_image->onChange = [this] { changed(); };
}

ImageBox::~ImageBox()
{
    if (m_image)
        m_image->onChange = nullptr;
}

platform::ImageControl *ImageBox::operator->() const
{
    if (!m_image)
        rt::raise(rt::ErrObjectVariableNotSet);
    return m_image.get();
}

std::optional<std::string> ImageBox::property(const std::string &name, const Args &args) const
{
    if (m_image) {
        const auto &im = *m_image;
        if (name == "FileName")
            return im.FileName();
        if (name == "SaveFileName")
            return im.SaveFileName();
        if (name == "IWidth")
            return std::to_string(im.IWidth());
        if (name == "IHeight")
            return std::to_string(im.IHeight());
        if (name == "IBPP")
            return std::to_string(im.IBPP());
        if (name == "FileType")
            return std::to_string(im.FileType());
        if (name == "FileSize")
            return std::to_string(im.FileSize());
        if (name == "UniqueColors")
            return std::to_string(im.UniqueColors());
        if (name == "ImagError")
            return std::to_string(im.ImagError());
        if (name == "IPZoomF")
            return rt::numberText(im.IPZoomF());
        if (name == "ScrollX")
            return std::to_string(im.ScrollX());
        if (name == "ScrollY")
            return std::to_string(im.ScrollY());
        if (name == "RubberBand") {
            const auto &b = im.rubberBand();
            if (!b.shown)
                return std::string();
            std::ostringstream s;
            s << b.left << "," << b.top << "," << b.right << "," << b.bottom;
            return s.str();
        }
    }
    return Control::property(name, args);
}

std::vector<std::string> ImageBox::propertyNames() const
{
    auto names = Control::propertyNames();
    if (m_image) {
        const std::vector<std::string> own {"FileName", "SaveFileName", "IWidth", "IHeight", "IBPP", "FileType",
            "FileSize", "UniqueColors", "ImagError", "IPZoomF", "ScrollX", "ScrollY", "RubberBand"};
        names.insert(names.begin(), own.begin(), own.end());
    }
    return names;
}

} // namespace ui
