// SPDX-License-Identifier: MIT
#pragma once

#include "Detached.h"

#include <QByteArray>

/// Hands what `parse` makes of a body to `deliver`: at once for a short body, by way of a thread for a long one.
/// Nothing is delivered once `context` is gone.
template <typename Parse, typename Deliver>
void parseBody(QObject* context, const QByteArray& body, const Parse& parse, const Deliver& deliver)
{
    constexpr qsizetype shortBody = 64 * 1024;
    if (body.size() <= shortBody)
        deliver(parse(body));
    else
        runDetached(
            context, [body, parse] { return parse(body); }, deliver);
}
