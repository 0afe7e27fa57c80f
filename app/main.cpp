// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/GalleryWindow.h"
#include "app/MainWindowLoader.h"
#include "app/SampleTakesTask.h"
#include "app/Snapshot.h"
#include "app/StartArguments.h"
#include "app/VantiroApp.h"
#include "core/words/Catalogue.h"
#include "platform/desktop/ApplicationId.h"
#include "platform/desktop/Notice.h"
#include "platform/desktop/SingleInstance.h"
#include "platform/media/MediaLoader.h"

#include <QGuiApplication>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

/// Copies that are under way have threads of their own, which nobody waits for. exit() would take away beneath them
/// what they still use, and a program that ends would crash.
[[noreturn]] void leaveAtOnce(int code)
{
    std::fflush(nullptr);
    std::_Exit(code);
}

/// Where the desktop started the program, nobody reads what it prints.
int tellOfSilence(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    vantiro::installCatalogue(application);
    const QString sentence = QCoreApplication::translate(
        "StartClaim", "Vantiro is running and does not answer. End it, then start it again.");
    QTextStream(stderr) << sentence << Qt::endl;
    vantiro::Notice::show(sentence);
    return 1;
}

int runApplication(vantiro::Bus instance, const QStringList& links)
{
    // Its end saves the settings.
    return vantiro::VantiroApp(std::move(instance)).run(links);
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
    StartClaim claim;
    if (arguments->task == Task::window) {
        claim = StartClaim::make(arguments->links);
        if (claim.outcome == StartClaim::Outcome::handedOver) {
            return 0;
        }
        if (claim.outcome == StartClaim::Outcome::unanswered) {
            return tellOfSilence(argc, argv);
        }
        // What is handed over later finds its place in the environment, which stays as large as it is once there are
        // threads.
        if (constexpr const char* token = "XDG_ACTIVATION_TOKEN"; !qEnvironmentVariableIsSet(token)) {
            qputenv(token, {});
        }
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
        leaveAtOnce(runApplication(std::move(claim.bus), arguments->links));
    }
}
