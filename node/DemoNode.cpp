// SPDX-License-Identifier: MIT
#include "DemoNode.h"

#include "AddService.h"
#include "BootstrapService.h"
#include "ConfigService.h"
#include "ContentService.h"
#include "DiagnosticsService.h"
#include "IdentityService.h"
#include "KeyService.h"
#include "PinService.h"
#include "RemoteService.h"
#include "SwarmService.h"

DemoNode::DemoNode(const DemoOptions& options, QObject* parent)
    : NodeServer(parent)
    , repo(options)
    , config(RemoteService::initialServices(options))
{
    mount(std::make_unique<IdentityService>());
    mount(std::make_unique<PinService>(repo));
    mount(std::make_unique<ContentService>(repo));
    mount(std::make_unique<AddService>(repo));
    mount(std::make_unique<RemoteService>(options, config));
    mount(std::make_unique<KeyService>(repo));
    mount(std::make_unique<SwarmService>(options));
    mount(std::make_unique<BootstrapService>(config));
    mount(std::make_unique<ConfigService>(config));
    mount(std::make_unique<DiagnosticsService>(repo));
    listen(options.port);
}

void DemoNode::mount(std::unique_ptr<NodeService> service)
{
    for (const NodeCommand& command : service->commands())
        commands.insert(command.path, command);
    services.push_back(std::move(service));
}

NodeAnswer DemoNode::answerTo(const NodeRequest& request)
{
    const auto command = commands.constFind(request.path);
    if (command == commands.constEnd())
        return NodeAnswer::text(404, "404 page not found\n");
    const auto refusal = refusalByCommand(request, *command);
    NodeAnswer answer = refusal ? *refusal : command->run(request);
    answer.latency += repo.options().latency;
    return answer;
}

std::optional<NodeUpload> DemoNode::uploadOf(const NodeRequest& head)
{
    const auto command = commands.constFind(head.path);
    if (command == commands.constEnd() || !command->upload)
        return std::nullopt;
    if (const auto refusal = refusalByCommand(head, *command))
        return NodeUpload {.head = *refusal};
    return command->upload(head);
}
