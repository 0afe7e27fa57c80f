// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/words/Catalogue.h"

#include "core/foundation/Log.h"

#include <QCoreApplication>
#include <QTranslator>

#include <memory>

namespace vantiro {

void installCatalogue(QCoreApplication& application)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(QStringLiteral(":/i18n/vantiro_en_linux.qm"))) {
        logLine(QStringLiteral("The catalogue of texts could not be read."));
        return;
    }
    QCoreApplication::installTranslator(translator.get());
    translator.release()->setParent(&application);
}

}  // namespace vantiro
