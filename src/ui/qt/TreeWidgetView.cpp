#include "TreeWidgetView.h"

#include <algorithm>

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTreeWidget>

#include "QtSupport.h"
#include "WindowView.h"
#include "ui/TreeView.h"

namespace uiqt {

using namespace ui;

TreeWidgetView::TreeWidgetView(TreeView &tree, WindowView &window)
    : ControlView(tree, window)
    , m_view(new QTreeWidget(window.canvas()))
{
    m_view->setColumnCount(1);
    m_view->setHeaderHidden(true);
    // The rows are numbered in the opened tree: nothing may fold away.
    m_view->setItemsExpandable(false);
    m_view->setExpandsOnDoubleClick(false);
    m_view->setRootIsDecorated(false);
    m_view->setUniformRowHeights(true);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // The selection is the control's: the view only shows it, clicks go to the control.
    m_view->setSelectionMode(QAbstractItemView::NoSelection);
    m_view->header()->setStretchLastSection(true);
    setWidget(m_view);
    watchMouse(m_view->viewport());
}

TreeView &TreeWidgetView::tree() const
{
    return *static_cast<TreeView *>(m_control);
}

void TreeWidgetView::rebuild()
{
    auto &t = tree();
    m_view->clear();
    m_items.clear();
    for (int row = 0; row < t.ListCount(); ++row) {
        const int parent = t.ParentRow(row);
        auto *item = parent >= 0 ? new QTreeWidgetItem(m_items[parent]) : new QTreeWidgetItem(m_view);
        item->setText(0, qs(t.List(row)));
        item->setData(0, Qt::UserRole, row);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        m_items.push_back(item);
    }
    m_view->expandAll();
    m_builtVersion = t.rowsVersion();
}

void TreeWidgetView::apply()
{
    auto &t = tree();
    if (t.rowsVersion() != m_builtVersion)
        rebuild();
    const int row = t.ListIndex();
    QTreeWidgetItem *wanted = row >= 0 && row < static_cast<int>(m_items.size()) ? m_items[row] : nullptr;
    const QList<QTreeWidgetItem *> shown = m_view->selectedItems();
    if (shown.size() != (wanted ? 1 : 0) || (wanted && shown.front() != wanted)) {
        m_view->clearSelection();
        if (wanted) {
            wanted->setSelected(true);
            m_view->scrollToItem(wanted);
        }
    }
    if (m_view->currentItem() != wanted)
        m_view->setCurrentItem(wanted, 0, QItemSelectionModel::NoUpdate);
}

int TreeWidgetView::rowAt(QWidget *part, QEvent *event) const
{
    if (part != m_view->viewport())
        return -1;
    QTreeWidgetItem *item = m_view->itemAt(static_cast<QMouseEvent *>(event)->position().toPoint());
    return item ? item->data(0, Qt::UserRole).toInt() : -1;
}

bool TreeWidgetView::widgetEvent(QWidget *part, QEvent *event)
{
    if (!m_control)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        if (static_cast<QMouseEvent *>(event)->button() != Qt::LeftButton)
            return false;
        const int row = rowAt(part, event);
        m_view->setFocus(Qt::MouseFocusReason);
        if (row >= 0)
            tree().userSelectRow(row);
        // Qt's own handling would fold or select by itself.
        return true;
    }
    case QEvent::KeyPress: {
        if (part != m_view)
            return false;
        auto &t = tree();
        const int count = t.ListCount();
        const int from = t.ListIndex();
        int to = -1;
        switch (static_cast<QKeyEvent *>(event)->key()) {
        case Qt::Key_Up: to = from - 1; break;
        case Qt::Key_Down: to = from + 1; break;
        case Qt::Key_Home: to = 0; break;
        case Qt::Key_End: to = count - 1; break;
        default: return false;
        }
        if (count == 0)
            return true;
        to = std::clamp(to, 0, count - 1);
        if (to != from)
            t.userSelectRow(to);
        return true;
    }
    default: return false;
    }
}

} // namespace uiqt
