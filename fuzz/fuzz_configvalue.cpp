// SPDX-License-Identifier: MIT
#include "ConfigValues.h"

#include <cstdint>
#include <cstdlib>

/// What is sent of a number, an object or an array is read back as the same value. What is shown is a number or that.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QJsonValue value;
    if (!parseJsonValueText(text, &value))
        return 0;
    const QString sent = jsonValueToCompactString(value);
    QJsonValue again;
    if (!value.isString() && (!parseJsonValueText(sent, &again) || again != value))
        std::abort();
    if (value.isDouble() && jsonValueToDisplayString(value).toDouble() != value.toDouble()
        && jsonNumberInFull(value) != sent)
        std::abort();
    return 0;
}
