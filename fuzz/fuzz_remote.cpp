// SPDX-License-Identifier: MIT
#include "RemoteParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// A list has an error or services with names; a pin has a state or an error.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const ServiceList list = parseServiceList(bytes);
    if (!list.error.isEmpty() && !list.services.isEmpty())
        std::abort();
    for (const ListedService& service : list.services) {
        if (service.entry.name.isEmpty())
            std::abort();
    }
    const RemotePinState state = parseRemotePinState(bytes, QStringLiteral("Q"));
    if (state.status.isEmpty() == state.error.isEmpty())
        std::abort();
    return 0;
}
