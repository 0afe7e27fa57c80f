// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/words/Catalogue.h"
#include "platform/media/MediaLoader.h"
#include "tool/Commands.h"
#include "tool/Help.h"
#include "tool/Terminal.h"

#include <QCoreApplication>
#include <QHash>

int main(int argc, char* argv[])
{
    using namespace vantiro;

    QCoreApplication application(argc, argv);
    installCatalogue(application);
    MediaLoader::install();
    QStringList words = QCoreApplication::arguments().mid(1);
    const QString name = words.isEmpty() ? QStringLiteral("--help") : words.takeFirst();
    if (name == QStringLiteral("--version")) {
        Terminal::print(QStringLiteral("vantiro " VANTIRO_VERSION));
        return Terminal::done;
    }
    if (name == QStringLiteral("--help") || name == QStringLiteral("-h") || name == QStringLiteral("help")) {
        Terminal::print(generalHelp());
        return Terminal::done;
    }
    const QHash<QString, int (*)(const QStringList&)> commands{
        {QStringLiteral("record"), recordCommand},
        {QStringLiteral("status"), statusCommand},
        {QStringLiteral("stop"), stopCommand},
        {QStringLiteral("toggle"), toggleCommand},
        {QStringLiteral("sources"), sourcesCommand},
        {QStringLiteral("check"), checkCommand},
        {QStringLiteral("takes"), takesCommand},
        {QStringLiteral("analyze"), analyzeCommand},
        {QStringLiteral("shape"), shapeCommand},
        {QStringLiteral("export"), exportCommand},
        {QStringLiteral("practice"), practiceCommand},
        {QStringLiteral("samples"), samplesCommand},
        {QStringLiteral("demo"), demoCommand},
    };
    const auto command = commands.value(name, nullptr);
    if (command == nullptr) {
        return Terminal::misuse(QStringLiteral("%1 is no command of vantiro").arg(name));
    }
    if (words.contains(QStringLiteral("--help"))) {
        Terminal::print(commandHelp(name));
        return Terminal::done;
    }
    return command(words);
}
