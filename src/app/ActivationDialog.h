// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

/// Says that the program runs in full, and which version it is. There is no licensing server.
class ActivationDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ActivationDialog(QWidget* parent = nullptr);
};
