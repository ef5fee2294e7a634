// SPDX-License-Identifier: MIT
#include "NodeService.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QList<NodeOption>& globalOptions()
{
    static const QList<NodeOption> options {{u"encoding"_s},
                                            {u"timeout"_s},
                                            {u"cid-base"_s},
                                            {u"offline"_s, NodeOption::Bool},
                                            {u"upgrade-cidv0-in-output"_s, NodeOption::Bool}};
    return options;
}

const NodeOption* optionNamed(const QString& name, const NodeCommand& command)
{
    for (const QList<NodeOption>* options : {&command.options, &globalOptions()}) {
        const auto option = std::ranges::find(*options, name, &NodeOption::name);
        if (option != options->end())
            return &*option;
    }
    return nullptr;
}

/// The type that `text` cannot be converted to, if it is not of the option's.
QString unmetType(const NodeOption& option, const QString& text)
{
    if (option.type == NodeOption::Bool
        && !QStringList {u"true"_s, u"false"_s, u"1"_s, u"0"_s, QString()}.contains(text))
        return u"bool"_s;
    bool isNumber = false;
    text.toLongLong(&isNumber);
    return option.type == NodeOption::Int && !isNumber ? u"int"_s : QString();
}

} // namespace

NodeAnswer badRequest(const QString& line)
{
    NodeAnswer answer = NodeAnswer::text(400, line.toUtf8() + '\n');
    answer.headers = {{"Content-Type", "text/plain; charset=utf-8"}};
    return answer;
}

std::optional<NodeAnswer> refusalByCommand(const NodeRequest& request, const NodeCommand& command)
{
    const auto items = request.items();
    QStringList seen;
    for (const auto& [name, value] : items) {
        const NodeOption* option = optionNamed(name, command);
        if (!option || option->type == NodeOption::List)
            continue;
        if (seen.contains(name))
            return badRequest(u"expected key %1 to have only a single value, received [%2]"_s.arg(
                name, request.values(name).join(u' ')));
        seen.append(name);
        if (const QString type = unmetType(*option, value); !type.isEmpty())
            return badRequest(
                u"could not convert value \"%1\" to type \"%2\" (for option \"-%3\")"_s.arg(value, type, name));
    }
    const bool hasArgument = std::ranges::any_of(items, [](const auto& item) { return item.first == "arg"_L1; });
    if (!command.argument.isEmpty() && !hasArgument)
        return badRequest(u"argument \"%1\" is required"_s.arg(command.argument));
    return std::nullopt;
}
