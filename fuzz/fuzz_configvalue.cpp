// SPDX-License-Identifier: MIT
#include "ConfigValues.h"
#include "FuzzTarget.h"

/// What is sent of a number, an object or an array is read back as the same value. What is shown is a number or that.
void checkInput(const QByteArray& input)
{
    const QString text = QString::fromUtf8(input);
    QJsonValue value;
    if (!parseJsonValueText(text, &value))
        return;
    const QString sent = jsonValueToCompactString(value);
    QJsonValue again;
    abortIf(!value.isString() && (!parseJsonValueText(sent, &again) || again != value));
    abortIf(value.isDouble() && jsonValueToDisplayString(value).toDouble() != value.toDouble()
            && jsonNumberInFull(value) != sent);
}
