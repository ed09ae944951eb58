// Panel: the rounded surfaces of the main column.
#pragma once

#include "Varda/View/Widgets/Icon.h"

#include <QVBoxLayout>
#include <QWidget>

namespace varda {

class IconLabel;

/// A rounded surface with a thin line around it.
class Surface : public QWidget
{
    Q_OBJECT

public:
    Surface(const QColor &fill, const QColor &line, double radius, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const QColor m_fill;
    const QColor m_line;
    const double m_radius;
};

/// A numbered work panel: a title with its icon, then what `content()` holds.
class Panel : public Surface
{
    Q_OBJECT

public:
    Panel(const QString &title, Icon icon, QWidget *parent = nullptr);

protected:
    /// The stack that holds the title; a panel adds its content.
    QVBoxLayout &content() { return *m_content; }

private:
    QVBoxLayout *m_content;
};

/// The heading of a panel: capitals in the accent colour behind an icon.
IconLabel *makeHeading(Icon icon, const QString &text, QWidget *parent);

/// A thin line across a stack.
QWidget *makeDivider();

/// A row of controls, aligned to the leading edge.
QHBoxLayout *makeRow(std::initializer_list<QWidget *> widgets);

} // namespace varda
