#pragma once

#include "TextBox.h"

namespace ui {

// A number field (`MMNumberEditX`): a text box whose Value is its text read as a whole number
// (0 for text that isn't one). Values set from code are taken as they stand; MinValue and
// MaxValue are the field's stated bounds.
class NumberEdit : public TextBox {
public:
    using TextBox::TextBox;
    const char *kind() const override { return "NumberEdit"; }

    int Value() const;
    void setValue(int value) { setText(std::to_string(value)); }
    int MinValue() const { return m_min; }
    int MaxValue() const { return m_max; }
    void setMinValue(int v) { m_min = v; }
    void setMaxValue(int v) { m_max = v; }
    int MaxLength() const { return m_maxLength; }
    void setMaxLength(int n) { m_maxLength = n; }

    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    bool setProperty(const std::string &name, const Args &args, const std::string &value) override;

private:
    int m_min = 0;
    int m_max = 0;
    int m_maxLength = 0;
};

} // namespace ui
