// The examples of this folder: a function a widget, by the name of its class. Those on a server
// take a session, which is connected when they are called.
#pragma once

#include <QtCore/QList>

class QvelSession;
class QWidget;

struct WidgetExample
{
    WidgetExample(const char* name, QWidget* (*function)()) : className(name), offline(function) {}
    WidgetExample(const char* name, QWidget* (*function)(QvelSession*))
        : className(name), online(function)
    {
    }

    const char* className;
    QWidget* (*offline)() = nullptr;
    QWidget* (*online)(QvelSession*) = nullptr;
};

QList<WidgetExample> valueExamples();
QList<WidgetExample> compositeExamples();
QList<WidgetExample> connectionExamples();
QList<WidgetExample> liveExamples();
