// SPDX-License-Identifier: MIT
#pragma once

#include "NodeMessages.h"

/// The version that the nodes report as their own.
inline constexpr char nodeVersion[] = "0.43.0";

/// Who may call a node, and how: its answer to a request that it does not even parse, nothing if it goes on.
std::optional<NodeAnswer> refusalByRules(const NodeRequest& request, quint16 port,
                                         const QList<QByteArray>& allowedOrigins);
