// AboutPane: what this program is, and where to read about what it runs.
#pragma once

#include "Varda/View/Widgets/FittedDialog.h"

namespace varda {

class AboutPane final : public FittedDialog
{
    Q_OBJECT

public:
    explicit AboutPane(QWidget *parent = nullptr);

    /// Shows it in front.
    void present();

private:
    void build() override;
};

} // namespace varda
