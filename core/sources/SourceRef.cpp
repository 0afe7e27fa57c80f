// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/SourceRef.h"

#include "core/foundation/Json.h"

#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    constexpr QLatin1StringView appPrefix = "app:"_L1;
    constexpr QLatin1StringView deviceWord = "device"_L1;
    constexpr QLatin1StringView appWord = "app"_L1;

}  // namespace

SourceRef SourceRef::device(QString uid)
{
    return {Kind::device, std::move(uid)};
}

SourceRef SourceRef::app(QString identifier)
{
    return {Kind::app, std::move(identifier)};
}

QString SourceRef::descriptor() const
{
    return kind == Kind::app ? appPrefix + id : id;
}

SourceRef SourceRef::fromDescriptor(const QString& descriptor)
{
    return descriptor.startsWith(appPrefix) ? app(descriptor.sliced(appPrefix.size())) : device(descriptor);
}

QJsonObject SourceRef::toJson() const
{
    return {{"kind"_L1, kind == Kind::app ? appWord : deviceWord}, {"id"_L1, id}};
}

Result<SourceRef> SourceRef::fromJson(const QJsonObject& object)
{
    SourceRef ref;
    QString kind;
    json::Reader reader(object);
    reader.read("kind"_L1, kind);
    reader.read("id"_L1, ref.id);
    if (kind == appWord) {
        ref.kind = Kind::app;
    } else if (kind != deviceWord) {
        reader.reject("kind"_L1);
    }
    return reader.finish(std::move(ref));
}

size_t qHash(const SourceRef& ref, size_t seed) noexcept
{
    return qHashMulti(seed, static_cast<int>(ref.kind), ref.id);
}

}  // namespace vantiro
