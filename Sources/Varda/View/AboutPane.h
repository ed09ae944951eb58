// AboutPane: what this program is, and where to read about what it runs.
#pragma once

#include <QDialog>

namespace varda {

class AboutPane final : public QDialog
{
    Q_OBJECT

public:
    explicit AboutPane(QWidget *parent = nullptr);

    /// Shows it in front.
    void present();
};

} // namespace varda
