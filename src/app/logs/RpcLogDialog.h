// SPDX-License-Identifier: MIT
#pragma once

#include "LogDialog.h"

/// Every request that has left for the node, as it leaves.
class RpcLogDialog : public LogDialog
{
    Q_OBJECT

public:
    explicit RpcLogDialog(StatusWindow* window, QWidget* parent = nullptr);

private:
    void follow(StatusWindow* window) override;
};
