#pragma once

#include "gallery.h"
#include "host.h"
#include "mainwindow.h"
#include "pages.h"
#include "sessionpage.h"

#include <Kestrel/QvelDiscoveryWidget>

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

/// By the name of the object, or what a screen reader says.
template <class W>
W* named(const QWidget& in, const QString& name)
{
    for (auto* widget : in.findChildren<W*>())
        if (widget->objectName() == name || widget->accessibleName() == name)
            return widget;
    qFatal("no widget %s", qPrintable(name));
}

/// One run of harrier with a settings file.
struct Run
{
    explicit Run(const QString& file) : store(file), host(store, 5000, file + ".data"), window(host)
    {
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window does not become active");
    }
    QWidget& page(const char* name)
    {
        for (int i = 0; i < pages().size(); ++i)
            if (QByteArray(pages().at(i).name) == name)
                QTest::keyClick(&window, Qt::Key(Qt::Key_1 + i), Qt::AltModifier);
        return *window.pageTabs()->currentWidget()->layout()->itemAt(0)->widget();
    }
    QWidget& galleryPage(int number)
    {
        Gallery& gallery = window.gallery();
        gallery.show();
        gallery.activateWindow();
        if (!QTest::qWaitForWindowActive(&gallery))
            qFatal("the gallery does not become active");
        QTest::keyClick(&gallery, Qt::Key(Qt::Key_0 + number), Qt::AltModifier);
        return *gallery.tabs()->currentWidget();
    }
    QString log() const { return named<QPlainTextEdit>(window, "Log")->toPlainText(); }
    /// Clicks the entry that begins so, at or below `parent`, once it is there, and opens it.
    QModelIndex open(const QString& text, const QModelIndex& parent = {}, bool twice = false)
    {
        QvelDiscoveryWidget& tree = *window.currentView();
        QModelIndexList found;
        const auto find = [&] {
            found = tree.model()->match(tree.model()->index(0, 0, parent), Qt::DisplayRole, text, 1,
                                        Qt::MatchStartsWith | Qt::MatchRecursive);
            return !found.isEmpty();
        };
        if (!QTest::qWaitFor(find, 30000))
            qFatal("no entry %s", qPrintable(text));
        tree.scrollTo(found[0]);
        const QPoint place = tree.visualRect(found[0]).center();
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, place);
        if (twice)
            QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, place);
        else
            QTest::keyClick(&tree, Qt::Key_Right);
        return found[0];
    }

    SettingsStore store;
    Host host;
    MainWindow window;
};

inline void type(QLineEdit* line, const QString& text)
{
    line->selectAll();
    QTest::keyClicks(line, text);
}
