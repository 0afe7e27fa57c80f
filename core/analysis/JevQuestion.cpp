// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/JevQuestion.h"

#include "core/foundation/Json.h"

#include <QJsonArray>

#include <optional>
#include <utility>

namespace vantiro {

using namespace Qt::Literals::StringLiterals;

namespace {

    using Primitive = JevQuestion::Primitive;

    std::optional<Primitive> primitive(const QString& word)
    {
        for (const Primitive type : {Primitive::score, Primitive::noul, Primitive::choice}) {
            if (rawValue(type) == word) {
                return type;
            }
        }
        return std::nullopt;
    }

    bool readLevels(const QJsonValue& criteria, QStringList& levels)
    {
        for (const auto& level : criteria.toArray()) {
            if (!level.isString()) {
                return false;
            }
            levels.append(level.toString());
        }
        return criteria.isArray();
    }

    bool readOptions(const QJsonValue& criteria, QMap<QString, QString>& options)
    {
        const QJsonObject object = criteria.toObject();
        for (auto option = object.begin(); option != object.end(); ++option) {
            if (!option->isString()) {
                return false;
            }
            options.insert(option.key(), option->toString());
        }
        return criteria.isObject();
    }

}  // namespace

JevQuestion JevQuestion::score(const QString& instructions, const QStringList& levels)
{
    return {.type = Primitive::score, .instructions = instructions, .levels = levels, .options = {}};
}

JevQuestion JevQuestion::noul(const QString& instructions, const QString& yes, const QString& no)
{
    return {
        .type = Primitive::noul,
        .instructions = instructions,
        .levels = {},
        .options = {{u"true"_s, yes}, {u"false"_s, no}},
    };
}

JevQuestion JevQuestion::choice(const QString& instructions, const QMap<QString, QString>& options)
{
    return {.type = Primitive::choice, .instructions = instructions, .levels = {}, .options = options};
}

QJsonObject JevQuestion::toJson() const
{
    QJsonValue criteria;
    if (type == Primitive::score) {
        criteria = QJsonArray::fromStringList(levels);
    } else {
        QJsonObject meanings;
        for (auto option = options.cbegin(); option != options.cend(); ++option) {
            meanings.insert(option.key(), option.value());
        }
        criteria = meanings;
    }
    return {{"type"_L1, rawValue(type)}, {"instructions"_L1, instructions}, {"criteria"_L1, criteria}};
}

Result<JevQuestion> JevQuestion::fromJson(const QJsonObject& object)
{
    JevQuestion question;
    json::Reader reader(object);
    QString word;
    reader.read("type"_L1, word);
    if (const auto found = primitive(word)) {
        question.type = *found;
    } else {
        reader.reject("type"_L1);
    }
    reader.read("instructions"_L1, question.instructions);
    const QJsonValue criteria = reader.value("criteria"_L1);
    const bool isRead = question.type == Primitive::score ? readLevels(criteria, question.levels)
                                                          : readOptions(criteria, question.options);
    if (!isRead) {
        reader.reject("criteria"_L1);
    }
    return reader.finish(std::move(question));
}

QString rawValue(JevQuestion::Primitive type)
{
    switch (type) {
    case Primitive::score:
        return u"score"_s;
    case Primitive::noul:
        return u"noul"_s;
    case Primitive::choice:
        return u"choice"_s;
    }
    return {};
}

}  // namespace vantiro
