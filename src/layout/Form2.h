#pragma once

#include <string>

#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/Label.h"
#include "ui/Window.h"

namespace layout {

// The disc choice: a 74 or an 80 minute CD, then on to the layout builder.
class Form2 : public ui::Window {
public:
    static constexpr const char *formName = "Form2";
    explicit Form2(ui::AppContext &app);

    void Form_Load() override;
    std::optional<std::string> member(const std::string &name) const override;

    ui::Label Label1;
    ui::CheckBox Check1;
    ui::CheckBox Check2;
    ui::Button ctButton1;
    ui::Button ctButton2;

    // "ok" once a box was clicked, whether or not one is ticked now.
    std::string formatChosen;

private:
    void boxClicked(ui::CheckBox &clicked, ui::CheckBox &other);
    void ctButton1_Click();

    // Unticking a box from its own handler raises its Click again; that round has nothing to undo.
    bool m_undoing = false;
};

} // namespace layout
