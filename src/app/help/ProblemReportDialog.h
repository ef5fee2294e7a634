// SPDX-License-Identifier: MIT
#pragma once

#include "ProblemReport.h"

#include <QDialog>

class QCheckBox;
class QPlainTextEdit;
class StatusLabel;

/// Shows the report of a problem, to be copied and sent by hand. Nothing is sent by the program.
class ProblemReportDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ProblemReportDialog(QWidget* parent = nullptr);

    void showReport(const ProblemReport& newReport);

private:
    void updateText();
    void copy();

    ProblemReport report {};
    QPlainTextEdit* view;
    QCheckBox* withAddresses;
    StatusLabel* status;
};
