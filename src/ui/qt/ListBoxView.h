#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QAbstractTableModel>
#include <QIcon>

#include "ControlView.h"

class QTreeView;

namespace ui {
class ListBox;
}

namespace uiqt {

// The rows of a list as Qt's views read them: straight from the control, row by row as
// they are painted, so that a list of many thousand rows costs no more than the rows in sight.
// The model keeps its own count, which it brings up to the control's on sync().
class ListBoxModel : public QAbstractTableModel {
public:
    explicit ListBoxModel(ui::ListBox &list);

    // Follows the control's last change; true when the rows were replaced wholesale.
    bool sync();
    void detach() { m_list = nullptr; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    void reset();
    QIcon rowImage(int image) const;

    ui::ListBox *m_list;
    int m_count = 0;
    std::vector<std::string> m_headers;
    mutable std::map<int, QIcon> m_images;
};

class ListBoxView : public ControlView {
public:
    ListBoxView(ui::ListBox &list, WindowView &window);
    ~ListBoxView() override;

protected:
    void apply() override;
    bool widgetEvent(QWidget *part, QEvent *event) override;
    void detached() override;

private:
    ui::ListBox &list() const;
    void syncSelection(bool full);
    void layColumns();
    int rowAt(QWidget *part, QEvent *event) const;

    QTreeView *m_view;
    std::unique_ptr<ListBoxModel> m_model;
    int m_shownRow = -1;
    bool m_firstSync = true;
};

} // namespace uiqt
