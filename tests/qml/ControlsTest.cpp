// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/qml/QmlModule.h"
#include "tests/qml/Stage.h"

#include <QAccessible>
#include <QObject>
#include <QQmlContext>
#include <QQmlEngine>
#include <QtQuickTest>

namespace vantiro {

/// A screen reader: it sees and does what the accessible side of an item offers, and nothing else.
class ScreenReader : public QObject {
    Q_OBJECT

public:
    /// Empty as well for what is nothing to be read.
    Q_INVOKABLE QString name(QObject* item) const
    {
        QAccessibleInterface* seen = view(item);
        return seen != nullptr ? seen->text(QAccessible::Name) : QString();
    }
    Q_INVOKABLE bool isChecked(QObject* item) const { return view(item)->state().checked; }
    Q_INVOKABLE QVariant value(QObject* item) const { return view(item)->valueInterface()->currentValue(); }
    Q_INVOKABLE void setValue(QObject* item, int value) const { view(item)->valueInterface()->setCurrentValue(value); }
    /// Does the action of that name if the item has it.
    Q_INVOKABLE bool act(QObject* item, const QString& action) const
    {
        QAccessibleActionInterface* actions = view(item)->actionInterface();
        if (actions == nullptr || !actions->actionNames().contains(action)) {
            return false;
        }
        actions->doAction(action);
        return true;
    }

private:
    static QAccessibleInterface* view(QObject* item) { return QAccessible::queryAccessibleInterface(item); }
};

class TestSetup : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void qmlEngineAvailable(QQmlEngine* engine)
    {
        QAccessible::setActive(true);
        installQmlModule(*engine);
        engine->rootContext()->setContextProperty(QStringLiteral("reader"), &m_reader);
        engine->rootContext()->setContextProperty(QStringLiteral("stage"), &m_stage);
        engine->rootContext()->setContextProperty(QStringLiteral("player"), &m_player);
    }

private:
    ScreenReader m_reader;
    test::Stage m_stage;
    test::Stage m_player{AppModel::Kind::live};
};

}  // namespace vantiro

QUICK_TEST_MAIN_WITH_SETUP(controls, vantiro::TestSetup)

#include "ControlsTest.moc"
