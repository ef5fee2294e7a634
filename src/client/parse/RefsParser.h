#pragma once

#include <QByteArray>
#include <QStringList>

/// The CIDs of a "/refs" stream in reply order, duplicates kept. Lines that name none are passed over.
QStringList parseRefs(const QByteArray& body);
