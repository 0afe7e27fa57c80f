// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/GalleryWindow.h"
#include "app/MainWindowLoader.h"
#include "app/SampleTakesTask.h"
#include "app/Snapshot.h"
#include "app/StartArguments.h"
#include "app/VantiroApp.h"
#include "core/words/Catalogue.h"
#include "platform/desktop/ApplicationId.h"
#include "platform/media/MediaLoader.h"

#include <QGuiApplication>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>

namespace {

/// Copies that are under way have threads of their own, which nobody waits for. exit() would take away beneath them
/// what they still use, and a program that ends would crash.
[[noreturn]] void leaveAtOnce(int code)
{
    std::fflush(nullptr);
    std::_Exit(code);
}

int runApplication()
{
    // Its end saves the settings.
    return vantiro::VantiroApp().run();
}

}  // namespace

int main(int argc, char* argv[])
{
    using namespace vantiro;
    using Task = StartArguments::Task;

    QStringList words;
    for (int index = 1; index < argc; ++index) {
        words.append(QString::fromLocal8Bit(argv[index]));
    }
    const auto arguments = StartArguments::read(words);
    if (!arguments) {
        QTextStream(stderr) << arguments.error() << '\n';
        return 1;
    }
    if (arguments->task == Task::sampleTakes) {
        return writeSampleTakes(arguments->folder);
    }
    if (arguments->task == Task::snapshot) {
        Snapshot::prepare();
    } else if (arguments->task == Task::gallery) {
        GalleryWindow::prepare(*arguments);
    }
    QCoreApplication::setApplicationName(QStringLiteral("Vantiro"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VANTIRO_VERSION));
    QGuiApplication::setDesktopFileName(QLatin1StringView(applicationId));
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(arguments->task == Task::gallery);
    QGuiApplication::setWindowIcon(MainWindowLoader::icon());
    installCatalogue(application);
    MediaLoader::install();
    switch (arguments->task) {
    case Task::snapshot:
        return Snapshot::run(arguments->folder);
    case Task::gallery:
        return GalleryWindow::run(*arguments);
    default:
        leaveAtOnce(runApplication());
    }
}
