#include "SpectrumView.h"

#include <algorithm>

namespace ui {

SpectrumView::SpectrumView(Window &owner, std::string name, int index) : Control(owner, std::move(name), index) {}

const char *SpectrumView::kind() const
{
    return "SpectrumView";
}

void SpectrumView::setFeed(std::function<std::vector<float>()> feed)
{
    m_feed = std::move(feed);
    changed();
}

std::vector<float> SpectrumView::readBins() const
{
    return m_feed ? m_feed() : std::vector<float>{};
}

std::optional<std::string> SpectrumView::property(const std::string &name, const Args &args) const
{
    if (name == "Bins")
        return std::to_string(readBins().size());
    if (name == "Peak") {
        const std::vector<float> bins = readBins();
        if (bins.empty())
            return std::string("-1");
        return std::to_string(std::max_element(bins.begin(), bins.end()) - bins.begin());
    }
    if (name == "Connected")
        return truthText(hasFeed());
    return Control::property(name, args);
}

std::vector<std::string> SpectrumView::propertyNames() const
{
    auto names = Control::propertyNames();
    names.insert(names.end(), {"Bins", "Peak", "Connected"});
    return names;
}

} // namespace ui
