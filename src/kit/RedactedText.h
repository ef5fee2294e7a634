// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// `line`, a message of this program, for strangers: without addresses, hosts, peers, CIDs, IPNS names, paths, names of
/// files, keys and services, and secrets. A word in brackets is in place of each. It removes too much rather than too
/// little: what is in quotes goes, and so does each name with a dot.
QString redactedText(const QString& line);
