// DeviceList: the attached devices as an exclusive list, or a text that says that none is attached.
#pragma once

#include "Varda/Model/VardaModel.h"

#include <QScrollArea>

class QLabel;
class QVBoxLayout;

namespace varda {

class DeviceRow;

/// As high as its rows; scrolls where the side column has no room for them. Like a group of radio buttons it is one
/// stop for Tab, and its arrow keys select. The rows are widgets of their own, for what a screen reader holds on to has
/// to stay the same device: an item view's accessible items are handed on to other rows when rows come and go.
class DeviceList final : public QScrollArea
{
    Q_OBJECT

public:
    /// The rows follow `tabPredecessor` in the tab order.
    DeviceList(VardaModel &model, QWidget *tabPredecessor, QWidget *parent = nullptr);

    /// Rows whose device stays are kept, with their focus; equal devices repaint nothing.
    void render();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    DeviceRow *takeRow(QList<DeviceRow *> &former, const QString &id);
    void arrange(const QList<DeviceRow *> &rows);

    VardaModel &m_model;
    QWidget *m_tabPredecessor;
    QWidget *m_content;
    QVBoxLayout *m_stack;
    QLabel *m_waiting;
    QList<DeviceRow *> m_rows;
};

} // namespace varda
