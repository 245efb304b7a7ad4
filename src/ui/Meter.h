#pragma once

#include "Control.h"

namespace ui {

// A meter, progress bar or slider: a value between Min and Max. A value outside is error 380.
class Meter : public Control {
public:
    enum class Style { Meter, ProgressBar, Slider };
    Meter(Window &owner, std::string name, Style style = Style::Meter, int index = -1);
    const char *kind() const override;
    Style style() const { return m_style; }

    int Value() const { return m_value; }
    void setValue(int value);
    int Min() const { return m_min; }
    int Max() const { return m_max; }
    void setMin(int min);
    void setMax(int max);
    // A gauge's text, shown over its bar ("Converting...").
    const std::string &Caption() const { return m_caption; }
    void setCaption(const std::string &text);
    // Vertical meters grow upwards.
    bool vertical() const { return m_vertical; }
    void setVertical(bool on) { m_vertical = on; }
    // A vertical slider has Min at the top; a gain slider turns that round, boost upwards.
    bool maxAtTop() const { return m_maxAtTop; }
    void setMaxAtTop(bool on) { m_maxAtTop = on; }

    // The user moves a slider to a value: Value changes, then Change.
    void userSlide(int value);
    std::function<void()> Change;

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;
    std::vector<std::string> propertyNames() const override;

private:
    Style m_style;
    int m_value = 0;
    int m_min = 0;
    int m_max = 100;
    bool m_vertical = false;
    bool m_maxAtTop = false;
    std::string m_caption;
};

} // namespace ui
