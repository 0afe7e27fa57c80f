// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/SourceMemory.h"

#include "core/foundation/Files.h"
#include "core/foundation/Json.h"

#include <QJsonDocument>

#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    /// The object under the key, empty if there is none; nothing if something else stands there.
    std::optional<QJsonObject> map(const QJsonObject& root, QLatin1StringView key)
    {
        const QJsonValue value = root.value(key);
        if (!value.isObject() && !value.isUndefined() && !value.isNull()) {
            return std::nullopt;
        }
        return value.toObject();
    }

}  // namespace

QString SourceMemory::key(QStringList uids)
{
    uids.sort();
    return uids.join(u'|');
}

std::optional<SourceRef> SourceMemory::choice(const QStringList& uids) const
{
    const auto found = m_choices.constFind(key(uids));
    return found == m_choices.cend() ? std::nullopt : std::optional(*found);
}

void SourceMemory::remember(const SourceRef& source, const QStringList& uids)
{
    m_choices.insert(key(uids), source);
}

void SourceMemory::forgetChoices()
{
    m_choices.clear();
}

std::optional<double> SourceMemory::lastRate(const SourceRef& source) const
{
    const auto found = m_rates.constFind(source.descriptor());
    return found == m_rates.cend() ? std::nullopt : std::optional(*found);
}

void SourceMemory::rememberRate(double rate, const SourceRef& source)
{
    m_rates.insert(source.descriptor(), rate);
}

SourceMemory SourceMemory::load(const QString& path)
{
    const auto bytes = files::read(path);
    const auto root = bytes ? json::object(*bytes) : std::nullopt;
    if (!root) {
        return {};
    }
    const auto choices = map(*root, "choices"_L1);
    const auto rates = map(*root, "rates"_L1);
    if (!choices || !rates) {
        return {};
    }
    SourceMemory memory;
    for (auto entry = choices->begin(); entry != choices->end(); ++entry) {
        // What is not an object lacks both keys.
        const auto ref = SourceRef::fromJson(entry.value().toObject());
        if (!ref) {
            return {};
        }
        memory.m_choices.insert(entry.key(), *ref);
    }
    for (auto entry = rates->begin(); entry != rates->end(); ++entry) {
        if (!entry.value().isDouble()) {
            return {};
        }
        memory.m_rates.insert(entry.key(), entry.value().toDouble());
    }
    return memory;
}

Result<void> SourceMemory::save(const QString& path) const
{
    QJsonObject choices;
    for (auto entry = m_choices.cbegin(); entry != m_choices.cend(); ++entry) {
        choices.insert(entry.key(), entry.value().toJson());
    }
    QJsonObject rates;
    for (auto entry = m_rates.cbegin(); entry != m_rates.cend(); ++entry) {
        rates.insert(entry.key(), json::number(entry.value()));
    }
    const QJsonDocument document(QJsonObject{{"choices"_L1, choices}, {"rates"_L1, rates}});
    return files::replace(path, document.toJson(QJsonDocument::Compact), files::Durability::passing);
}

}  // namespace vantiro
