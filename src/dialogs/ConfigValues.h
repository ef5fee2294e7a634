// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

/// How a value of the node's configuration is written. The names are shown, stored and put into files alike.
namespace ConfigMode {

inline constexpr QLatin1StringView text {"String"};
inline constexpr QLatin1StringView boolean {"Bool"};
inline constexpr QLatin1StringView json {"JSON"};

} // namespace ConfigMode

/// A value as it is edited and written: strings without quotes, null as "null", objects and arrays as compact JSON. A
/// number has six digits, or as many more as it needs to be read back as the same number.
QString jsonValueToCompactString(const QJsonValue& value);
/// A value as the tree shows it: null as nothing, numbers with six digits.
QString jsonValueToDisplayString(const QJsonValue& value);
/// All digits of a number that jsonValueToDisplayString shortens; empty for any other value.
QString jsonNumberInFull(const QJsonValue& value);

/// Reads any JSON value, a bare scalar included, into `out`. False for text that is no JSON, and `out` stays.
bool parseJsonValueText(const QString& text, QJsonValue* out);

/// Whether a change of the key, in any case, can cut off the node or this program from it.
bool isRiskyConfigKey(const QString& key);

/// A value that is to be written, or why it can't be.
struct ConfigWrite
{
    QString value {};
    bool isBool = false;
    bool isJson = false;
    QString error {}; ///< for people; empty if it can be sent
};

/// What a key and a value mean in one of the modes of ConfigMode.
ConfigWrite judgeConfigWrite(const QString& key, const QString& valueText, const QString& mode);

/// The document as indented JSON for a text field. What such a field would change on its way, as a no-break space, is
/// escaped.
QString configForEditor(const QJsonObject& config);
