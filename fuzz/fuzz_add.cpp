// SPDX-License-Identifier: MIT
#include "AddParser.h"
#include "RemoteParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto line = parseAddLine(bytes);
    const ServiceList list = parseServiceList(bytes);
    const RemotePinState state = parseRemotePinState(bytes, QStringLiteral("Q"));
    if (state.status.isEmpty() == state.error.isEmpty())
        std::abort();
    if ((line && line->entry.size != 0 && !bytes.contains('{')) || list.entries().size() != list.services.size())
        std::abort();
    return 0;
}
