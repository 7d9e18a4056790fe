// A host in small: it places an editor, types into it and reads the value.

#include <Kestrel/QvelWidgetNodeId>
#include <Kestrel/UaNodeId>

#include <QApplication>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QvelWidgetNodeId editor;
    editor.setNodeId(UaNodeId(UaString("Pump"), 2));
    editor.show();
    bool ok = false;
    const UaNodeId id = editor.nodeId(&ok);
    std::printf("%s\n", id.toFullString().toUtf8());
    return ok && id.toFullString() == UaString("ns=2;s=Pump") ? 0 : 1;
}
