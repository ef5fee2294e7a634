// SPDX-License-Identifier: MIT
#pragma once

#include "LogDialog.h"

/// Every request that has left for the node, as it leaves.
class RpcLogDialog : public LogDialog
{
    Q_OBJECT

public:
    explicit RpcLogDialog(MainWindow* window, QWidget* parent = nullptr);

private:
    void follow(MainWindow* window) override;
};
