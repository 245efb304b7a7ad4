#pragma once

#include <vector>

#include "ControlView.h"

class QTreeWidget;
class QTreeWidgetItem;

namespace ui {
class TreeView;
}

namespace uiqt {

// The tree of the kit: a QTreeWidget whose rows stand always opened. The selection is the
// control's; a click or an arrow key on a row goes to the control as the user's selection.
class TreeWidgetView : public ControlView {
public:
    TreeWidgetView(ui::TreeView &tree, WindowView &window);

protected:
    void apply() override;
    bool widgetEvent(QWidget *part, QEvent *event) override;

private:
    ui::TreeView &tree() const;
    void rebuild();
    int rowAt(QWidget *part, QEvent *event) const;

    QTreeWidget *m_view;
    // The item of each row, in row order.
    std::vector<QTreeWidgetItem *> m_items;
    int m_builtVersion = -1;
};

} // namespace uiqt
