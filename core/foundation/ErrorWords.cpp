// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/ErrorWords.h"

#include "core/foundation/Secrets.h"

#include <QCoreApplication>

namespace vantiro::ErrorWords {

namespace {

    struct Words {
        Q_DECLARE_TR_FUNCTIONS(ErrorWords)
    };

    template <class... Functions>
    struct Overloaded : Functions... {
        using Functions::operator()...;
    };

    QString networkReason(NetworkError::Kind kind, const QString& service)
    {
        switch (kind) {
        case NetworkError::Kind::offline:
            return Words::tr("this Mac is offline");
        case NetworkError::Kind::dropped:
            return Words::tr("the connection dropped");
        case NetworkError::Kind::timedOut:
            return Words::tr("%1 took too long to answer").arg(service);
        case NetworkError::Kind::cancelled:
            return Words::tr("the connection was canceled");
        case NetworkError::Kind::other:
            break;
        }
        return Words::tr("%1 could not be reached").arg(service);
    }

}  // namespace

QString code(const Error& error)
{
    const auto words = Overloaded{
        [](const CaptureError& failure) -> QString { return QStringLiteral("CaptureError: ") + failure.description; },
        [](const LibraryError& failure) -> QString { return QStringLiteral("LibraryError: ") + failure.description; },
        [](const ExchangeFailure& failure) -> QString { return QStringLiteral("exchange: ") + failure.description; },
        [](const NetworkError& failure) { return QStringLiteral("URLError %1").arg(failure.number); },
        [](const SystemError& failure) -> QString {
            return failure.domain + QLatin1Char(' ') + QString::number(failure.number);
        },
    };
    return Secrets::redacted(std::visit(words, error));
}

QString reason(const Error& error, const QString& service)
{
    const auto words = Overloaded{
        [&service](const NetworkError& failure) { return networkReason(failure.kind, service); },
        [&service](const SystemError&) { return Words::tr("the copy for %1 could not be made").arg(service); },
        [](const auto& failure) { return Secrets::redacted(failure.description); },
    };
    return std::visit(words, error);
}

QString mixcloudUploadFailed(const Error& error)
{
    return Words::tr("The take did not reach Mixcloud: %1. The take is still in your takes folder.")
        .arg(reason(error, QStringLiteral("Mixcloud")));
}

}  // namespace vantiro::ErrorWords
