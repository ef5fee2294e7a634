// SPDX-License-Identifier: MIT
#include "ConfigValues.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QString sixDigits(double number)
{
    return QString::number(number, 'g', 6);
}

/// Integers are kept as such, beyond what a double holds exactly.
bool isInteger(const QJsonValue& value)
{
    return value.toVariant().typeId() == QMetaType::LongLong;
}

QString allDigits(const QJsonValue& value)
{
    return isInteger(value) ? QString::number(value.toInteger())
                            : QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
}

bool isWholeNumber(const QString& digits, const QJsonValue& value)
{
    const double number = digits.toDouble();
    if (!isInteger(value))
        return number == value.toDouble();
    constexpr double bound = 0x1p63; // the first that 64 bits don't hold
    return number >= -bound && number < bound && static_cast<qint64>(number) == value.toInteger();
}

QString compactJson(const QJsonValue& value)
{
    const QJsonDocument document = value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}

ConfigWrite refusedWrite(const char* reason)
{
    return {.error = QCoreApplication::translate("ConfigDialog", reason)};
}

ConfigWrite booleanWrite(const QString& valueText)
{
    const QString value = valueText.trimmed().toLower();
    if (value != "true"_L1 && value != "false"_L1)
        return refusedWrite(QT_TRANSLATE_NOOP("ConfigDialog", "Bool mode accepts only true or false."));
    return {.value = value, .isBool = true};
}

/// A JSON string loses its quotes here, so that the node refuses it; a text is written in the mode for texts.
ConfigWrite jsonWrite(const QString& valueText)
{
    QJsonValue value;
    if (!parseJsonValueText(valueText, &value))
        return refusedWrite(QT_TRANSLATE_NOOP("ConfigDialog", "JSON mode requires a valid JSON value."));
    return {.value = jsonValueToCompactString(value), .isJson = true};
}

} // namespace

QString jsonValueToCompactString(const QJsonValue& value)
{
    if (value.isNull())
        return u"null"_s;
    const QString missing = jsonNumberInFull(value);
    return missing.isEmpty() ? jsonValueToDisplayString(value) : missing;
}

QString jsonValueToDisplayString(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Object:
    case QJsonValue::Array:
        return compactJson(value);
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Bool:
        return value.toBool() ? u"true"_s : u"false"_s;
    case QJsonValue::Double:
        return sixDigits(value.toDouble());
    default:
        return {};
    }
}

QString jsonNumberInFull(const QJsonValue& value)
{
    if (!value.isDouble() || isWholeNumber(sixDigits(value.toDouble()), value))
        return {};
    return allDigits(value);
}

bool parseJsonValueText(const QString& text, QJsonValue* out)
{
    if (!out)
        return false;
    // The parser takes whole documents only, and so a scalar as a member of one.
    const QString document = uR"({"v":%1})"_s.arg(text.trimmed());
    QJsonParseError error {};
    const QJsonDocument parsed = QJsonDocument::fromJson(document.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !parsed.isObject())
        return false;
    *out = parsed.object().value("v"_L1);
    return true;
}

bool isRiskyConfigKey(const QString& key)
{
    static constexpr std::array risky {"addresses.api"_L1, "addresses.gateway"_L1, "bootstrap"_L1,
                                       "swarm"_L1,         "identity"_L1,          "datastore"_L1};
    const QString lowered = key.trimmed().toLower();
    return std::ranges::any_of(risky, [&lowered](QLatin1StringView entry) {
        return lowered.startsWith(entry) && (lowered.size() == entry.size() || lowered.at(entry.size()) == u'.');
    });
}

ConfigWrite judgeConfigWrite(const QString& key, const QString& valueText, const QString& mode)
{
    if (key.trimmed().isEmpty())
        return refusedWrite(QT_TRANSLATE_NOOP("ConfigDialog", "Config key is required."));
    if (valueText.trimmed().isEmpty())
        return refusedWrite(QT_TRANSLATE_NOOP("ConfigDialog", "Config value is required."));
    if (mode == ConfigMode::boolean)
        return booleanWrite(valueText);
    if (mode == ConfigMode::json)
        return jsonWrite(valueText);
    return {.value = valueText};
}

QString configForEditor(const QJsonObject& config)
{
    constexpr std::array changed {u'\u00a0', u'\u2028', u'\u2029', u'\ufdd0', u'\ufdd1'};
    QString text = QString::fromUtf8(QJsonDocument(config).toJson(QJsonDocument::Indented));
    for (const char16_t letter : changed) // in strings alone
        text.replace(QChar(letter), u"\\u%1"_s.arg(static_cast<uint>(letter), 4, 16, QChar(u'0')));
    return text;
}
