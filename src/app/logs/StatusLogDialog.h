// SPDX-License-Identifier: MIT
#pragma once

#include "LogDialog.h"

/// Every status message that the main window has shown.
class StatusLogDialog : public LogDialog
{
    Q_OBJECT

public:
    explicit StatusLogDialog(StatusWindow* window, QWidget* parent = nullptr);

private:
    void follow(StatusWindow* window) override;
};
