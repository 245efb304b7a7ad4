#include "ListBoxView.h"

#include <map>

#include <QFontMetrics>
#include <QHeaderView>
#include <QIcon>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QScrollBar>
#include <QStyle>
#include <QTreeView>

#include "QtSupport.h"
#include "WindowView.h"
#include "ui/ListBox.h"

namespace uiqt {

using namespace ui;

namespace {

// The small mark a row shows in its first column; one colour per image number.
QIcon makeRowImage(int image)
{
    static const QColor colours[] = {QColor(0, 150, 0), QColor(0, 90, 200), QColor(200, 0, 0),
                                     QColor(230, 140, 0), QColor(130, 0, 160), QColor(110, 110, 110)};
    QPixmap pm(12, 12);
    pm.fill(Qt::transparent);
    // Image 0 is no mark: an empty picture of the same size.
    if (image > 0) {
        QPainter p(&pm);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(Qt::NoPen);
        p.setBrush(colours[(image - 1) % std::size(colours)]);
        p.drawEllipse(QRectF(1.5, 1.5, 9, 9));
    }
    return QIcon(pm);
}

} // namespace

// Made on first use and kept by the model: pictures must not outlive the application.
QIcon ListBoxModel::rowImage(int image) const
{
    auto it = m_images.find(image);
    if (it == m_images.end())
        it = m_images.emplace(image, makeRowImage(image)).first;
    return it->second;
}

ListBoxModel::ListBoxModel(ListBox &list)
    : m_list(&list)
    , m_count(list.ListCount())
    , m_headers(list.ColumnHeaders())
{
}

void ListBoxModel::reset()
{
    beginResetModel();
    m_count = m_list->ListCount();
    m_headers = m_list->ColumnHeaders();
    endResetModel();
}

bool ListBoxModel::sync()
{
    if (!m_list)
        return false;
    if (m_list->ColumnHeaders() != m_headers) {
        reset();
        return true;
    }
    // The last change may be an old one: the control reports every change of any property,
    // so the count tells whether the rows moved since the model last looked.
    const int count = m_list->ListCount();
    const int row = m_list->lastChangeRow();
    switch (m_list->lastChange()) {
    case ListBox::Change::Inserted:
        if (count == m_count + 1 && row >= 0 && row <= m_count) {
            beginInsertRows({}, row, row);
            ++m_count;
            endInsertRows();
            return false;
        }
        break;
    case ListBox::Change::Removed:
        if (count == m_count - 1 && row >= 0 && row < m_count) {
            beginRemoveRows({}, row, row);
            --m_count;
            endRemoveRows();
            return false;
        }
        break;
    case ListBox::Change::Updated:
        if (count == m_count && row >= 0 && row < m_count) {
            emit dataChanged(index(row, 0), index(row, columnCount() - 1));
            return false;
        }
        break;
    default: break;
    }
    if (count != m_count) {
        reset();
        return true;
    }
    return false;
}

int ListBoxModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_count;
}

int ListBoxModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : std::max<int>(1, static_cast<int>(m_headers.size()));
}

QVariant ListBoxModel::data(const QModelIndex &index, int role) const
{
    if (!m_list || !index.isValid() || index.row() >= m_count)
        return {};
    const int row = index.row();
    if (role == Qt::DisplayRole) {
        if (m_headers.empty())
            return qs(m_list->List(row));
        return qs(m_list->Column(row, index.column() + 1));
    }
    if (role == Qt::DecorationRole && index.column() == 0) {
        const int image = m_list->RowImage(row);
        if (image > 0)
            return rowImage(image);
        // A list in columns keeps the room for a mark on every row, so the texts line up.
        if (!m_headers.empty())
            return rowImage(0);
    }
    return {};
}

QVariant ListBoxModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
        section < static_cast<int>(m_headers.size()))
        return qs(m_headers[section]);
    return {};
}

Qt::ItemFlags ListBoxModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

ListBoxView::ListBoxView(ListBox &list, WindowView &window)
    : ControlView(list, window)
    , m_view(new QTreeView(window.canvas()))
    , m_model(std::make_unique<ListBoxModel>(list))
{
    m_view->setRootIsDecorated(false);
    m_view->setItemsExpandable(false);
    // Equal rows let the view place any row by arithmetic: scrolling costs the same for ten rows
    // or ten thousand.
    m_view->setUniformRowHeights(true);
    m_view->setAllColumnsShowFocus(true);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    // The selection is the control's: the view only shows it, clicks go to the control.
    m_view->setSelectionMode(QAbstractItemView::NoSelection);
    m_view->setTextElideMode(Qt::ElideRight);
    m_view->header()->setStretchLastSection(true);
    m_view->header()->setSectionsMovable(false);
    m_view->setModel(m_model.get());
    setWidget(m_view);
    watchMouse(m_view->viewport());
}

// The model goes before the view widget, which then shows nothing.
ListBoxView::~ListBoxView() = default;

ListBox &ListBoxView::list() const
{
    return *static_cast<ListBox *>(m_control);
}

void ListBoxView::detached()
{
    m_model->detach();
}

void ListBoxView::apply()
{
    const bool replaced = m_model->sync();
    const bool columns = !list().ColumnHeaders().empty();
    if (m_view->isHeaderHidden() == columns)
        m_view->setHeaderHidden(!columns);
    if (replaced || m_firstSync)
        layColumns();
    syncSelection(replaced || m_firstSync);
    m_firstSync = false;
}

void ListBoxView::layColumns()
{
    const int columns = m_model->columnCount();
    if (columns <= 1)
        return;
    if (const auto &widths = list().ColumnWidths(); !widths.empty()) {
        for (int c = 0; c < columns && c < static_cast<int>(widths.size()); ++c)
            m_view->header()->resizeSection(c, std::max(toPixels(widths[static_cast<size_t>(c)]), 20));
        return;
    }
    // The titles get the room: a column without a header holds the row mark only, the last
    // column (a time) keeps room for "00-00:00" or its header, and the columns between share
    // the rest. The scroll bar's room stays free, so many rows never hide the last column.
    const QFontMetrics fm(m_view->font());
    const int padding = 2 * fm.horizontalAdvance(QLatin1Char('x'));
    const int icon = m_view->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, m_view);
    const auto header = [&](int c) { return m_model->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString(); };
    const int lastWidth =
        std::max(fm.horizontalAdvance(header(columns - 1)), fm.horizontalAdvance(QStringLiteral("00-00:00"))) + padding;
    int available =
        kitRect().width() - 2 * m_view->frameWidth() - m_view->verticalScrollBar()->sizeHint().width() - lastWidth;
    int shared = 0;
    for (int c = 0; c < columns - 1; ++c) {
        if (header(c).isEmpty())
            available -= icon + padding;
        else
            ++shared;
    }
    for (int c = 0; c < columns - 1; ++c) {
        const int w = header(c).isEmpty() ? icon + padding : available / std::max(1, shared);
        m_view->header()->resizeSection(c, std::max(w, 20));
    }
    // The last column stretches over what is left, but never below the size it was given.
    m_view->header()->resizeSection(columns - 1, lastWidth);
}

void ListBoxView::syncSelection(bool full)
{
    auto &l = list();
    QItemSelectionModel *selection = m_view->selectionModel();
    const int count = m_model->rowCount();
    const auto rowIndex = [&](int row) { return m_model->index(row, 0); };
    const auto rowRange = [&](int first, int last) {
        return QItemSelectionRange(m_model->index(first, 0), m_model->index(last, m_model->columnCount() - 1));
    };
    const int current = l.ListIndex();
    if (full)
        m_shownRow = -2;

    if (!l.MultiSelect()) {
        const int shown = current >= 0 && current < count && l.Selected(current) ? current : -1;
        if (shown != m_shownRow) {
            if (shown >= 0) {
                selection->select(QItemSelection(rowRange(shown, shown).topLeft(), rowRange(shown, shown).bottomRight()),
                                  QItemSelectionModel::ClearAndSelect);
                m_view->scrollTo(rowIndex(shown));
            } else {
                selection->clearSelection();
            }
            m_shownRow = shown;
        }
    } else if (full) {
        QItemSelection all;
        for (int first = 0; first < count;) {
            if (!l.Selected(first)) {
                ++first;
                continue;
            }
            int last = first;
            while (last + 1 < count && l.Selected(last + 1))
                ++last;
            all.append(rowRange(first, last));
            first = last + 1;
        }
        selection->select(all, QItemSelectionModel::ClearAndSelect);
        m_shownRow = -1;
    } else if (l.lastChange() == ListBox::Change::Selection) {
        const int row = l.lastChangeRow();
        if (row >= 0 && row < count) {
            const QItemSelection one(rowRange(row, row).topLeft(), rowRange(row, row).bottomRight());
            selection->select(one, l.Selected(row) ? QItemSelectionModel::Select : QItemSelectionModel::Deselect);
        }
    }

    const QModelIndex wanted = current >= 0 && current < count ? rowIndex(current) : QModelIndex();
    if (selection->currentIndex().row() != wanted.row())
        selection->setCurrentIndex(wanted, QItemSelectionModel::NoUpdate);
}

int ListBoxView::rowAt(QWidget *part, QEvent *event) const
{
    if (part != m_view->viewport())
        return -1;
    const QModelIndex index = m_view->indexAt(static_cast<QMouseEvent *>(event)->position().toPoint());
    return index.isValid() ? index.row() : -1;
}

bool ListBoxView::widgetEvent(QWidget *part, QEvent *event)
{
    if (!m_control)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        // The row is taken as the button goes down, and Click comes with it, as it did.
        if (static_cast<QMouseEvent *>(event)->button() != Qt::LeftButton)
            return false;
        const int row = rowAt(part, event);
        if (row >= 0)
            list().userClickRow(row);
        return !m_control;
    }
    case QEvent::MouseButtonDblClick: {
        if (static_cast<QMouseEvent *>(event)->button() != Qt::LeftButton)
            return false;
        const int row = rowAt(part, event);
        if (row >= 0)
            list().userDblClickRow(row);
        return !m_control;
    }
    case QEvent::KeyPress: {
        if (part != m_view)
            return false;
        auto &l = list();
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (l.MultiSelect()) {
            // Arrows move the focus only; the space bar ticks the row in focus.
            if (key == Qt::Key_Space && m_view->currentIndex().isValid()) {
                l.userClickRow(m_view->currentIndex().row());
                return true;
            }
            return false;
        }
        const int count = l.ListCount();
        const int from = l.ListIndex();
        const int page = std::max(1, m_view->viewport()->height() / std::max(1, m_view->sizeHintForRow(0)) - 1);
        int to = -1;
        switch (key) {
        case Qt::Key_Up: to = from - 1; break;
        case Qt::Key_Down: to = from + 1; break;
        case Qt::Key_PageUp: to = from - page; break;
        case Qt::Key_PageDown: to = from + page; break;
        case Qt::Key_Home: to = 0; break;
        case Qt::Key_End: to = count - 1; break;
        default: return false;
        }
        if (count == 0)
            return true;
        to = std::clamp(to, 0, count - 1);
        if (to != from)
            l.userClickRow(to);
        if (m_control)
            m_view->scrollTo(m_model->index(to, 0));
        return true;
    }
    default: return false;
    }
}

} // namespace uiqt
