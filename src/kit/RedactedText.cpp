// SPDX-License-Identifier: MIT
#include "RedactedText.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct Rule
{
    const char16_t* pattern;
    const char16_t* replacement;
};

/// Messages that hold whatever a person, a folder or a node has called something. What is between is a name.
constexpr std::array messageRules {
    Rule {u"(Adding to IPFS: (?:\\d+/\\d+ — )?|Added to IPFS: |Exported \\d+ CID\\(s\\) to |Downloading |Saving |"
          u"Bootstrap peer added: |Adding bootstrap peer: |(?:Connecting to|Disconnecting) swarm peer: |"
          u"Swarm (?:dis)?connect success: |IPNS publish succeeded: |IPNS resolved: |Copied IPNS name: |"
          u"Copied resolved path: |to IPNS key ).+",
          u"\\1[name]"},
    Rule {u"((?:Resolving|Publishing) ).+?(…| to IPNS key)", u"\\1[name]\\2"},
    Rule {u"(Opening ).+( in browser| from local gateway)", u"\\1[name]\\2"},
    Rule {u"((?:Remote [a-z ]+|for publish) \\().*?(\\)[:…])", u"\\1[name]\\2"},
    Rule {u"(Host )\\S+( not found)", u"\\1[address]\\2"},
    Rule {u"(\\blookup )[^\\s:]+", u"\\1[address]"},
};

/// From what can be told for certain to what only might be something.
constexpr std::array formRules {
    Rule {u"(?i)\\b(bearer|basic|token|password|passwd|secret|api[-_ ]?key|authorization)(\\s*[:=]\\s*|\\s+)"
          u"(?:(?:bearer|basic)\\s+)?\\S+",
          u"\\1\\2[secret]"},
    Rule {u"<peer\\.ID[^>]*>?", u"[peer]"},
    Rule {u"\\bhttps?://[^\\s\"'<>/?#]*(/api/v0/[a-z/-]*)?[^\\s\"'<>]*", u"[address]\\1"},
    Rule {u"\\b[A-Za-z][A-Za-z0-9+.-]*://[^\\s\"'<>]*", u"[address]"},
    Rule {u"/(ipfs|ipns)/\\S*", u"/\\1/[CID]"},
    Rule {u"/(?:ip4|ip6|ip6zone|ipcidr|dns|dns4|dns6|dnsaddr|p2p|tcp|udp|onion|onion3|garlic32|garlic64|unix|memory)"
          u"(?!\\w)(?:/\\S*)?",
          u"[address]"},
    Rule {u"(?<![\\w:.])'[^\\n]*?'(?!\\w)", u"'[name]'"},
    Rule {u"\"(?:\\\\.|[^\"\\\\\\n])*(?:\"|$)", u"\"[name]\""}, // what has been cut has no end
    // A path may have blanks in it, so it ends where the line does or where the reason of a failure begins.
    Rule {u"(?<![\\w\\]/])(?:~|[A-Za-z]:)?[/\\\\][^\"\\n]*?(?=:\\s|\\s->\\s|\"|'(?!\\w)|\\n|$)", u"[path]"},
    Rule {u"[^\\s@\"'<>]+@[^\\s\"'<>]+", u"[address]"},
    Rule {u"\\[[0-9A-Fa-f.]*:[0-9A-Fa-f.:]*(?:%[\\w.-]+)?\\](?::\\d{1,5})?", u"[address]"},
    Rule {u"(?<![\\w:.])(?!\\d\\d:\\d\\d:\\d\\d(?!:))(?=[0-9A-Fa-f]*:[0-9A-Fa-f]*:)[0-9A-Fa-f:]+(?:\\.\\d{1,3}){0,3}"
          u"(?:%\\w+)?",
          u"[address]"},
    Rule {u"(?<![\\d.])\\d{1,3}(?:\\.\\d{1,3}){3}(?![\\w])(?:/\\d{1,2}|:\\d{1,5})?", u"[address]"},
    Rule {u"\\b(?:localhost(?::\\d+)?|(?=[\\w-]*[A-Za-z])[\\w-]+:\\d{1,5})\\b", u"[address]"},
    Rule {u"\\b\\w{2,}…\\w{2,}", u"[CID]"}, // the middle is left out
    Rule {u"[A-Za-z0-9+/_=-]{32,}…?", u"[CID]"},
    Rule {u"\\b(?=[A-Za-z]*\\d)(?=\\d*[A-Za-z])[A-Za-z0-9]{12,}…?", u"[CID]"},
    Rule {u"\\b(?:Qm|12D3|16U|baf|bae|bag|bah|zdj|zb2|zQm|k51|k2k|f01|F01|mAX|uAX)\\w{4,}…?", u"[CID]"},
    Rule {u"(?<![\\w.])\\.?[\\w-]+(?:\\.[\\w-]+)*\\.[A-Za-z][\\w-]*", u"[name]"},
};

/// Both tables, compiled once.
const std::vector<std::pair<QRegularExpression, QString>>& compiledRules()
{
    static const auto rules = [] {
        std::vector<std::pair<QRegularExpression, QString>> compiled;
        compiled.reserve(messageRules.size() + formRules.size());
        const auto compile = [&compiled](const Rule& rule) {
            compiled.emplace_back(
                QRegularExpression(QString::fromUtf16(rule.pattern), QRegularExpression::UseUnicodePropertiesOption),
                QString::fromUtf16(rule.replacement));
        };
        std::ranges::for_each(messageRules, compile);
        std::ranges::for_each(formRules, compile);
        return compiled;
    }();
    return rules;
}

} // namespace

QString redactedText(const QString& line)
{
    QString text = line;
    for (const auto& [pattern, replacement] : compiledRules())
        text.replace(pattern, replacement);
    return text;
}
