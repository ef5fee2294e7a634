// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "RemoteParser.h"

/// A list has an error or services with names; a pin has a state or an error.
void checkInput(const QByteArray& bytes)
{
    const ServiceList list = parseServiceList(bytes);
    abortIf(!list.error.isEmpty() && !list.services.isEmpty());
    for (const ListedService& service : list.services)
        abortIf(service.entry.name.isEmpty());
    const RemotePinState state = parseRemotePinState(bytes, QStringLiteral("Q"));
    abortIf(state.status.isEmpty() == state.error.isEmpty());
}
