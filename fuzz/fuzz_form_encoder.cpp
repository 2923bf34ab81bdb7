// Form encoding of a parameter tree decoded from the input. The input is read as lines, one
// parameter each:
//   [dots] kind key [= value]
// - each leading "." puts the parameter one level deeper, in the container opened last on the level
//   above (or in the deepest one open, when there are more dots than levels);
// - kind is one character: "s" text, "i" integer, "u" unsigned, "d" double, "b" boolean (a value
//   other than "" and "0" is true), "t" date (seconds since the epoch), "y" bytes, "n" no value,
//   "N" null text, "L" list of texts (the value split at ","), "{" map, "<" hash, "[" list (its
//   elements' keys are not used); any other character reads as text;
// - the key runs to the first "=", the value to the end of the line; "\" takes the next byte as it
//   is, so that keys and values can hold any byte; both are decoded as UTF-8.
// Whatever the tree, the output must be plain query text: printable ASCII without spaces, every "%"
// starting an escape of two upper-case hexadecimal digits.
#include "client/formencoder.h"

#include <QDateTime>
#include <QVariantHash>
#include <QVariantList>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

struct Node
{
    char kind = 's';
    QString key;
    QByteArray value;
    std::vector<Node> children;
};

bool isContainer(char kind)
{
    return kind == '{' || kind == '<' || kind == '[';
}

Node parse(const QByteArray &input)
{
    Node root;
    root.kind = '{';
    // The containers open from the root down. Only the last one gains children, so the pointers to
    // it and to its ancestors stay valid.
    std::vector<Node *> open{&root};
    qsizetype at = 0;
    while (at < input.size()) {
        size_t depth = 0;
        for (; at < input.size() && input.at(at) == '.'; ++at)
            ++depth;
        Node node;
        if (at < input.size() && input.at(at) != '\n')
            node.kind = input.at(at++);
        QByteArray key;
        QByteArray *field = &key;
        while (at < input.size() && input.at(at) != '\n') {
            char byte = input.at(at++);
            if (byte == '\\' && at < input.size()) {
                byte = input.at(at++);
            } else if (byte == '=' && field == &key) {
                field = &node.value;
                continue;
            }
            field->append(byte);
        }
        ++at; // the line's end
        node.key = QString::fromUtf8(key);

        open.resize(std::min(open.size(), depth + 1));
        std::vector<Node> &siblings = open.back()->children;
        siblings.push_back(std::move(node));
        if (isContainer(siblings.back().kind))
            open.push_back(&siblings.back());
    }
    return root;
}

QVariant toVariant(const Node &node)
{
    switch (node.kind) {
    case 'i':
        return node.value.toLongLong();
    case 'u':
        return node.value.toULongLong();
    case 'd':
        return node.value.toDouble();
    case 'b':
        return !node.value.isEmpty() && node.value != "0";
    case 't':
        return QDateTime::fromSecsSinceEpoch(node.value.toLongLong(), Qt::UTC);
    case 'y':
        return node.value;
    case 'n':
        return QVariant();
    case 'N':
        return QString();
    case 'L':
        return QString::fromUtf8(node.value).split(u',');
    case '{': {
        QVariantMap map;
        for (const Node &child : node.children)
            map.insert(child.key, toVariant(child));
        return map;
    }
    case '<': {
        QVariantHash hash;
        for (const Node &child : node.children)
            hash.insert(child.key, toVariant(child));
        return hash;
    }
    case '[': {
        QVariantList list;
        for (const Node &child : node.children)
            list.append(toVariant(child));
        return list;
    }
    default:
        return QString::fromUtf8(node.value);
    }
}

bool isUpperHex(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F');
}

void require(bool holds, const char *broken, const QByteArray &encoded, qsizetype at)
{
    if (holds)
        return;
    std::fprintf(stderr, "form encoding: %s at offset %lld of:\n%s\n", broken, qlonglong(at),
                 encoded.constData());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const Node root = parse(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    const QByteArray encoded = bvt::FormEncoder::encode(toVariant(root).toMap());
    for (qsizetype at = 0; at < encoded.size(); ++at) {
        const char byte = encoded.at(at);
        require(byte > ' ' && byte <= '~', "a space or a byte outside printable ASCII", encoded,
                at);
        if (byte == '%')
            require(at + 2 < encoded.size() && isUpperHex(encoded.at(at + 1))
                            && isUpperHex(encoded.at(at + 2)),
                    "a \"%\" without two upper-case hexadecimal digits", encoded, at);
    }
    return 0;
}
