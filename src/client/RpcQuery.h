// SPDX-License-Identifier: MIT
#pragma once

#include <QUrlQuery>

#include <initializer_list>
#include <utility>

/// Appends an item whose value the node decodes to exactly `value`, whatever it holds ("+", ";", "%41", blanks, UTF-8).
void addQueryItem(QUrlQuery& query, const QString& key, const QString& value);

/// The items in this order, each added by addQueryItem.
QUrlQuery rpcQuery(std::initializer_list<std::pair<QString, QString>> items);
