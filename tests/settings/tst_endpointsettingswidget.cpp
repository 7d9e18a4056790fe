#include "support/warnings.h"

#include <Kestrel/QvelEndpointSettingsWidget>

#include <QtGui/QAccessible>
#include <QtGui/QTextDocument>
#include <QtTest/QtTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

using Widget = QvelEndpointSettingsWidget;

namespace {

const QString prefix = "http://opcfoundation.org/UA/SecurityPolicy#";

QString uri(const char* name)
{
    return prefix + name;
}

} // namespace

class EndpointSettingsWidgetTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_form = std::make_unique<Widget>();
        m_form->show();
        logSignals();
    }

    void formIsAsDesigned_data()
    {
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("grid"); // and row, column
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("toolTip"); // a leading "*": as a rich-text document
        QTest::addColumn<bool>("enabled");
        struct Row
        {
            const char *name, *className, *grid, *text, *toolTip;
            bool enabled = true;
        };
        const char* url = "The endpoint URL of the server to connect to";
        const char* policy = "The security policy to be used for the connection";
        const char* mode = "The message security mode to be used for the connection";
        const char* user = "*The username used for authentication";
        const char* password = "*The password used for authentication";
        const char* certificate = "*The certificate used for authentication";
        const char* key = "The private key associated with the certificate";
        const char* session = "The session name to be used for the connection";
        const Row rows[] = {
            {"groupBox_ServerInformation", "QGroupBox", "", "Server Information", ""},
            {"groupBox_SecuritySettings", "QGroupBox", "", "Security Settings", ""},
            {"groupBox_AuthenticationSettings", "QGroupBox", "", "Authentication Settings", ""},
            {"groupBox_SessionSettings", "QGroupBox", "", "Session Settings", ""},
            {"label_ServerUrl", "QLabel", "gridLayout 1,0", "Endpoint Url", url},
            {"lineEdit_EndpointUrl", "QLineEdit", "gridLayout 1,1", "", url},
            {"label_2", "QLabel", "gridLayout_SecuritySettings 0,0", "Security Policy", policy},
            {"comboBox_SecurityPolicy", "QComboBox", "gridLayout_SecuritySettings 0,1",
             "None|Basic128Rsa15|Basic256", policy},
            {"label_3", "QLabel", "gridLayout_SecuritySettings 1,0", "Message Security Mode", mode},
            {"comboBox_SecurityMode", "QComboBox", "gridLayout_SecuritySettings 1,1",
             "None|Sign|Sign & Encrypt", mode},
            {"radioButton_Anonymous", "QRadioButton", "gridLayout_5 1,0", "",
             "Log on to the server as anonymous user"},
            {"widget_Anonymous", "QWidget", "gridLayout_5 1,1", "", ""},
            {"label_6", "QLabel", "", "Anonymous", ""},
            {"line", "QFrame", "gridLayout_5 2,1", "", ""},
            {"radioButton_Username", "QRadioButton", "gridLayout_5 3,0", "",
             "Log on to the server using username / password authentication"},
            {"widget_UserName", "QWidget", "gridLayout_5 3,1", "", ""},
            {"label_7", "QLabel", "gridLayout_2 0,0", "Username", user},
            {"lineEdit_UserName", "QLineEdit", "gridLayout_2 0,1", "", user, false},
            {"label_8", "QLabel", "gridLayout_2 2,0", "Password", password},
            {"lineEdit_Password", "QLineEdit", "gridLayout_2 2,1", "", password, false},
            {"checkBox_StorePassword", "QCheckBox", "gridLayout_2 2,2", "Store",
             "Store the password", false},
            {"line_2", "QFrame", "gridLayout_5 4,1", "", ""},
            {"radioButton_Certificate", "QRadioButton", "gridLayout_5 5,0", "",
             "Log on to the server using a certificate (Currently not supported)"},
            {"widget_Certificate", "QWidget", "gridLayout_5 5,1", "", ""},
            {"label_9", "QLabel", "gridLayout_4 0,0", "Certificate", certificate},
            {"lineEdit_Certificate", "QLineEdit", "gridLayout_4 0,1", "", certificate, false},
            {"toolButton_Certificate", "QToolButton", "gridLayout_4 0,2", "...",
             "*Load certificate file", false},
            {"label", "QLabel", "gridLayout_4 1,0", "Private Key", key},
            {"lineEdit_PrivateKey", "QLineEdit", "gridLayout_4 1,1", "", key, false},
            {"toolButton_PrivateKey", "QToolButton", "gridLayout_4 1,2", "...",
             "Load private key file", false},
            {"label_4", "QLabel", "gridLayout_6 0,0", "Session Name", session},
            {"lineEdit_SessionName", "QLineEdit", "gridLayout_6 0,1", "", session},
        };
        for (const Row& row : rows)
            QTest::newRow(row.name) << QString(row.className) << QString(row.grid)
                                    << QString(row.text) << QString(row.toolTip) << row.enabled;
    }
    void formIsAsDesigned()
    {
        QFETCH(QString, className);
        QFETCH(QString, grid);
        QFETCH(QString, toolTip);
        auto* widget = child<QWidget>(QTest::currentDataTag());
        QCOMPARE(widget->metaObject()->className(), className);
        QTEST(textOf(widget), "text");
        QTEST(widget->isEnabled(), "enabled");
        if (toolTip.startsWith('*')) {
            QVERIFY(widget->toolTip().startsWith("<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4"));
            QVERIFY(widget->toolTip().contains("font-family:'MS Shell Dlg 2'; font-size:8.25pt;"));
            QTextDocument document;
            document.setHtml(widget->toolTip());
            QCOMPARE(document.toPlainText(), toolTip.mid(1));
        } else {
            QCOMPARE(widget->toolTip(), toolTip);
        }
        if (className == "QLabel" && !grid.isEmpty())
            QCOMPARE(widget->minimumWidth(), 120);
        if (grid.isEmpty())
            return;
        auto* layout = m_form->findChild<QGridLayout*>(grid.section(' ', 0, 0));
        QVERIFY(layout);
        int row, column, rows, columns;
        layout->getItemPosition(layout->indexOf(widget), &row, &column, &rows, &columns);
        QCOMPARE(QString("%1,%2").arg(row).arg(column), grid.section(' ', 1));
        if (layout->parentWidget()->inherits("QGroupBox"))
            QCOMPARE(layout->columnStretch(1), 1);
    }

    void formAsAWhole()
    {
        QCOMPARE(m_form->windowTitle(), "Server Configuration");
        QCOMPARE(Widget().size(), QSize(463, 509));
        auto* layout = m_form->findChild<QVBoxLayout*>("mainLayout");
        QCOMPARE(layout, m_form->layout());
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->count(), 5);
        const QSpacerItem* spacer = layout->itemAt(4)->spacerItem();
        QVERIFY(spacer);
        QCOMPARE(spacer->sizeHint(), QSize(20, 40));
        QCOMPARE(spacer->sizePolicy().horizontalPolicy(), QSizePolicy::Minimum);
        QCOMPARE(spacer->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(child<QLabel>("label_3")->baseSize(), QSize(113, 20));
        QCOMPARE(child<QLineEdit>("lineEdit_Password")->echoMode(), QLineEdit::Password);
        QCOMPARE(child<QGroupBox>("groupBox_ServerInformation")->whatsThis(),
                 "<b>Server Information</b><br>Specifies the endpoint URL to connect to. Always "
                 "begins with 'opc.tcp:'.");
        QCOMPARE(child<QGroupBox>("groupBox_SecuritySettings")->whatsThis(),
                 "<b>Security Settings</b><br>Specify the security settings for the connection.");
        QCOMPARE(child<QGroupBox>("groupBox_AuthenticationSettings")->whatsThis(),
                 "<b>Authentication Settings</b><br>Select the user token type for the connection "
                 "here. If store password is selected, the password will be stored just as long as "
                 "Harrier is running and will not be written to disk.");

        const QStringList tabOrder = {
            "lineEdit_EndpointUrl",  "comboBox_SecurityPolicy", "comboBox_SecurityMode",
            "radioButton_Anonymous", "radioButton_Username",    "radioButton_Certificate",
            "lineEdit_UserName",     "lineEdit_Password",       "checkBox_StorePassword",
            "lineEdit_Certificate",  "toolButton_Certificate",  "lineEdit_SessionName",
            "lineEdit_PrivateKey",   "toolButton_PrivateKey",
        };
        QStringList chain;
        for (QWidget* w = m_form->nextInFocusChain(); w != m_form.get();
             w = w->nextInFocusChain()) {
            if (w->focusPolicy() & Qt::TabFocus && !w->objectName().startsWith("qt_")) {
                chain += w->objectName();
                const auto* accessible = QAccessible::queryAccessibleInterface(w);
                QVERIFY2(!accessible->text(QAccessible::Name).isEmpty(), qPrintable(chain.last()));
            }
        }
        QCOMPARE(chain, tabOrder);
        QCOMPARE(m_form->securityPolicies(),
                 QStringList({uri("None"), uri("Basic128Rsa15"), uri("Basic256")}));
    }

    // A state is "policy mode, modes that can be chosen" and "token, inputs that are enabled". A
    // step is a click on: p0 to p2 a policy, m0 to m2 a mode, A U C a user token, s "Store".
    // h and H hide and show "Store".
    void clicks_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("step");
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("signalled"); // each is followed by serverConfigChanged
        struct Row
        {
            const char *before, *step, *state, *signalled;
        };
        const Row rows[] = {
            // Policy and mode.
            {"", "", "0 0,0 A", ""},
            {"", "m1", "0 0,0 A", ""}, // disabled
            {"", "m2", "0 0,0 A", ""},
            {"", "p0", "0 0,0 A", ""}, // no change
            {"", "p1", "1 2,12 A", "mode 3, policy Basic128Rsa15"},
            {"", "p2", "2 2,12 A", "mode 3, policy Basic256"},
            {"p1", "m0", "1 2,12 A", ""}, // disabled
            {"p1", "m1", "1 1,12 A", "mode 2"},
            {"p1 m1", "m2", "1 2,12 A", "mode 3"},
            {"p1", "p2", "2 2,12 A", "policy Basic256"},
            {"p1 m1", "p2", "2 1,12 A", "policy Basic256"}, // Sign is kept
            {"p1", "p0", "0 0,0 A", "mode 1, policy None"},
            {"p1 m1", "p0", "0 0,0 A", "mode 1, policy None"},
            {"p2", "m0", "2 2,12 A", ""},
            {"p2", "m1", "2 1,12 A", "mode 2"},
            {"p2", "p1", "1 2,12 A", "policy Basic128Rsa15"},
            {"p2 m1", "p1", "1 1,12 A", "policy Basic128Rsa15"},
            {"p2", "p0", "0 0,0 A", "mode 1, policy None"},
            {"p2 m1", "p0", "0 0,0 A", "mode 1, policy None"},
            // Token type, "Store" and the password.
            {"", "A", "0 0,0 A", ""},
            {"", "s", "0 0,0 A", ""}, // disabled
            {"", "U", "0 0,0 U name store", "token 1"},
            {"", "C", "0 0,0 C certificate key", "token 2"},
            {"U", "U", "0 0,0 U name store", ""},
            {"U", "s", "0 0,0 U name store+ password", "store 1"},
            {"U s", "s", "0 0,0 U name store", "store 0"},
            {"U", "A", "0 0,0 A", "token 0"},
            {"U", "C", "0 0,0 C certificate key", "token 2"},
            {"U s", "A", "0 0,0 A +", "token 0"},
            {"U s", "C", "0 0,0 C + certificate key", "token 2"},
            {"U s A", "s", "0 0,0 A +", ""},
            {"U s A", "U", "0 0,0 U name store+ password", "token 1"},
            {"U s C", "U", "0 0,0 U name store+ password", "token 1"},
            {"C", "A", "0 0,0 A", "token 0"},
            {"C", "U", "0 0,0 U name store", "token 1"},
            // Without "Store", a user name is enough.
            {"h", "", "0 0,0 A", ""},
            {"h", "U", "0 0,0 U name store password", "token 1"},
            {"h U", "C", "0 0,0 C certificate key", "token 2"},
            {"h C", "U", "0 0,0 U name store password", "token 1"},
            {"U s A h", "U", "0 0,0 U name store+ password", "token 1"},
            {"h H", "U", "0 0,0 U name store", "token 1"},
            // Set by the host, which can reach what the user cannot.
            {"", "S", "0 0,0 A +", "store 1"},
            {"C", "S", "0 0,0 C + certificate key", "store 1"},
            {"U", "S", "0 0,0 U name store+ password", "store 1"},
        };
        for (const Row& row : rows)
            QTest::addRow("[%s] %s", row.before, row.step)
                << QString(row.before) << QString(row.step) << QString(row.state)
                << QString(row.signalled);
    }
    void clicks()
    {
        QFETCH(QString, before);
        QFETCH(QString, step);
        QFETCH(QString, signalled);
        for (const QString& each : before.split(' ', Qt::SkipEmptyParts))
            take(each);
        m_log.clear();
        take(step);
        QTEST(state(), "state");
        QStringList expected;
        for (const QString& each : signalled.split(", ", Qt::SkipEmptyParts))
            expected << each << "config";
        QCOMPARE(m_log, expected);
    }

    void typing_data()
    {
        QTest::addColumn<QString>("step");
        QTest::addColumn<QString>("signal");
        QTest::newRow("lineEdit_EndpointUrl") << ""
                                              << "url x";
        QTest::newRow("lineEdit_SessionName") << ""
                                              << "session x";
        QTest::newRow("lineEdit_UserName") << "U"
                                           << "user x";
        QTest::newRow("lineEdit_Password") << "U s"
                                           << "password x";
        QTest::newRow("lineEdit_Certificate") << "C"
                                              << "certificate x";
        QTest::newRow("lineEdit_PrivateKey") << "C"
                                             << "key x";
    }
    void typing()
    {
        QFETCH(QString, step);
        QFETCH(QString, signal);
        for (const QString& each : step.split(' ', Qt::SkipEmptyParts))
            take(each);
        m_log.clear();
        QTest::keyClicks(child<QLineEdit>(QTest::currentDataTag()), "x");
        QCOMPARE(m_log, QStringList({signal, "config"}));
        const QStringList texts = {m_form->endpointUrl(),     m_form->sessionName(),
                                   m_form->userName(),        m_form->password(),
                                   m_form->certificateFile(), m_form->privateKeyFile()};
        QCOMPARE(texts.count("x"), 1);
    }

    void hostSets()
    {
        m_form->setPassword("secret"); // the field is disabled
        QCOMPARE(m_form->password(), "secret");
        QCOMPARE(m_log, QStringList({"password secret", "config"}));
        m_form->setSecurityPolicy(uri("basic256"));
        m_form->setSecurityPolicy("Basic256");
        m_form->setSecurityPolicy("");
        QCOMPARE(m_form->securityPolicy(), uri("None"));
        m_form->setSecurityPolicy(uri("Basic256"));
        m_form->setSecurityMode(OpcUa_MessageSecurityMode_Sign);
        m_form->setSecurityMode(OpcUa_MessageSecurityMode_Invalid);
        QCOMPARE(m_form->securityMode(), OpcUa_MessageSecurityMode_None);
        for (const quint32 beyond : {4u, 0x7fffffffu, 0xffffffffu}) {
            m_form->setSecurityMode(OpcUa_MessageSecurityMode_Sign);
            m_log.clear();
            m_form->setSecurityMode(OpcUa_MessageSecurityMode(beyond));
            QCOMPARE(m_form->securityMode(), OpcUa_MessageSecurityMode_Invalid);
            QCOMPARE(m_log, QStringList({"config"}));
        }
        m_form->setUserTokenType(OpcUa_UserTokenType_Certificate);
        m_form->setUserTokenType(OpcUa_UserTokenType_IssuedToken);
        QCOMPARE(m_form->userTokenType(), OpcUa_UserTokenType_Certificate);
    }

    void supportedTokenTypes_data()
    {
        QTest::addColumn<QList<int>>("types");
        QTest::addColumn<QString>("enabled");
        QTest::addColumn<int>("checked");
        QTest::newRow("none given") << QList<int>{} << "AUC" << 0;
        QTest::newRow("all") << QList<int>{2, 1, 0} << "AUC" << 0;
        QTest::newRow("anonymous") << QList<int>{0} << "A" << 0;
        QTest::newRow("user") << QList<int>{1} << "U" << 1;
        QTest::newRow("certificate") << QList<int>{2} << "C" << 2;
        QTest::newRow("user, certificate") << QList<int>{2, 1, 2, 3} << "UC" << 1;
        QTest::newRow("issued only") << QList<int>{3} << "" << 2;
        QTest::newRow("unknown only") << QList<int>{77} << "" << 2;
    }
    void supportedTokenTypes()
    {
        QFETCH(QList<int>, types);
        QList<OpcUa_UserTokenType> list;
        for (const int type : types)
            list.append(OpcUa_UserTokenType(type));
        m_form->setUserTokenType(OpcUa_UserTokenType_Certificate);
        m_form->setSupportedUserTokenTypes(list);
        QString enabled;
        for (const char* name : {"Anonymous", "Username", "Certificate"}) {
            if (child<QWidget>(QByteArray("radioButton_") + name)->isEnabled())
                enabled += name[0];
        }
        QTEST(enabled, "enabled");
        QTEST(int(m_form->userTokenType()), "checked");
    }

    void visibleElements()
    {
        const std::pair<int, const char*> elements[] = {{1, "groupBox_ServerInformation"},
                                                        {2, "groupBox_SecuritySettings"},
                                                        {4, "groupBox_AuthenticationSettings"},
                                                        {8, "groupBox_SessionSettings"},
                                                        {32, "checkBox_StorePassword"}};
        for (int flags = 63; flags >= 0; --flags) {
            m_form->setVisibleGuiElements(Widget::GuiElements(flags));
            for (const auto& [flag, name] : elements)
                QCOMPARE(!child<QWidget>(name)->isHidden(), bool(flags & flag));
            QCOMPARE(m_form->layout()->count(), flags & Widget::BottomStretch ? 5 : 4);
        }
    }

    void offeredPolicies_data()
    {
        QTest::addColumn<QStringList>("offered");
        QTest::addColumn<QStringList>("effective");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QStringList>("log");
        const QString none = uri("None"), old = uri("Basic256"), aes = uri("Aes256_Sha256_RsaPss");
        const QStringList fallen = {"mode 1", "config", "policy None", "config"};
        QTest::newRow("kept, moved")
            << QStringList{aes, old} << QStringList{none, aes, old} << old << QStringList{};
        QTest::newRow("gone") << QStringList{aes} << QStringList{none, aes} << none << fallen;
        QTest::newRow("None in the middle") << QStringList{old, none, aes, old, ""}
                                            << QStringList{none, old, aes} << old << QStringList{};
        QTest::newRow("nothing but None") << QStringList{""} << QStringList{none} << none << fallen;
        QTest::newRow("default") << QStringList{} << QStringList{none, uri("Basic128Rsa15"), old}
                                 << old << QStringList{};
        QTest::newRow("other URIs")
            << QStringList{"urn:x", "urn:y#", old} << QStringList{none, "urn:x", "urn:y#", old}
            << old << QStringList{};
    }
    void offeredPolicies()
    {
        QFETCH(QStringList, offered);
        QFETCH(QStringList, effective);
        take("p2");
        m_log.clear();
        m_form->setSecurityPolicies(offered);
        QCOMPARE(m_form->securityPolicies(), effective);
        QTEST(m_form->securityPolicy(), "selected");
        QTEST(m_log, "log");
        auto* combo = child<QComboBox>("comboBox_SecurityPolicy");
        for (int i = 0; i < effective.size(); ++i) {
            const QString name = effective.at(i).section('#', 1);
            QCOMPARE(combo->itemText(i), name.isEmpty() ? effective.at(i) : name);
            m_form->setSecurityPolicy(effective.at(i));
            QCOMPARE(m_form->securityPolicy(), effective.at(i));
            // The rule of policy and mode stays, whatever the policy.
            QCOMPARE(m_form->securityMode(), i == 0 ? OpcUa_MessageSecurityMode_None
                                                    : OpcUa_MessageSecurityMode_SignAndEncrypt);
        }
    }

    void filePickers_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("filter");
        QTest::newRow("Certificate") << "Open Server Certificate"
                                     << "Certificate (*.der *.pem)";
        QTest::newRow("PrivateKey") << "Open Private Key"
                                    << "Private Key (*.pem)";
    }
    void filePickers()
    {
        const bool key = QTest::currentDataTag() == QByteArray("PrivateKey");
        const QTemporaryDir temporary;
        const QDir dir(QFileInfo(temporary.path()).canonicalFilePath());
        QVERIFY(dir.mkpath("remembered") && dir.mkpath("named"));
        for (const char* name : {"remembered/a b.pem", "named/c.pem"}) {
            QFile file(dir.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        const auto directory = [&] {
            return key ? m_form->privateKeyFilePath() : m_form->certificateFilePath();
        };
        const auto browse = [&](const QString& pick) { // gives where the dialog opened
            QString opened;
            QTimer::singleShot(0, this, [&] {
                auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                opened = dialog->directory().path();
                m_dialog = {dialog->windowTitle(), dialog->nameFilters().join(';')};
                if (pick.isEmpty())
                    return dialog->reject();
                dialog->findChild<QLineEdit*>("fileNameEdit")->setText(pick);
                QTest::keyClick(dialog->findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
            });
            QTest::mouseClick(child<QWidget>(QByteArray("toolButton_") + QTest::currentDataTag()),
                              Qt::LeftButton);
            return opened;
        };
        QCOMPARE(directory(), "");
        if (key)
            m_form->setPrivateKeyFilePath(dir.filePath("remembered"));
        else
            m_form->setCertificateFilePath(dir.filePath("remembered"));
        take("C");
        m_log.clear();

        QCOMPARE(browse(QString()), dir.filePath("remembered"));
        QFETCH(QString, title);
        QFETCH(QString, filter);
        QCOMPARE(m_dialog, QStringList({title, filter}));
        QVERIFY(m_log.isEmpty()); // cancelled

        browse(dir.filePath("remembered/a b.pem"));
        const QString signal = key ? "key " : "certificate ";
        QCOMPARE(m_log, QStringList({signal + dir.filePath("remembered/a b.pem"), "config"}));
        child<QLineEdit>(QByteArray("lineEdit_") + QTest::currentDataTag())
            ->setText(dir.filePath("named/x.pem"));
        QCOMPARE(browse(dir.filePath("named/c.pem")), dir.filePath("named"));
        QCOMPARE(directory(), dir.filePath("named"));
    }

    void largeLettersAndRightToLeft()
    {
        QFont font = m_form->font();
        font.setPointSizeF(2 * font.pointSizeF());
        m_form->setFont(font);
        m_form->setLayoutDirection(Qt::RightToLeft);
        QCoreApplication::processEvents(); // the layouts learn of the font
        m_form->resize(m_form->sizeHint());
        for (const auto* w : m_form->findChildren<QWidget*>()) {
            if (w->inherits("QLabel") || w->inherits("QAbstractButton") || w->inherits("QComboBox"))
                QVERIFY2(w->width() >= w->minimumSizeHint().width() &&
                             w->height() >= w->minimumSizeHint().height(),
                         qPrintable(w->objectName()));
        }
        QVERIFY(child<QLabel>("label_2")->x() > child<QComboBox>("comboBox_SecurityPolicy")->x());
    }

private:
    template <class W>
    W* child(const char* name) const
    {
        auto* found = m_form->findChild<W*>(QString(name));
        if (!found)
            qFatal("no %s", name);
        return found;
    }

    static QString textOf(const QWidget* widget)
    {
        if (auto* combo = qobject_cast<const QComboBox*>(widget)) {
            QStringList items;
            for (int i = 0; i < combo->count(); ++i)
                items += combo->itemText(i);
            return items.join('|');
        }
        if (auto* box = qobject_cast<const QGroupBox*>(widget))
            return box->title();
        return widget->property("text").toString();
    }

    void choose(const char* name, int item)
    {
        auto* combo = child<QComboBox>(name);
        combo->showPopup();
        QAbstractItemView* view = combo->view();
        const QModelIndex index = combo->model()->index(item, 0);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
        combo->hidePopup();
    }

    void take(const QString& step)
    {
        const char first = step.isEmpty() ? '\0' : step.at(0).toLatin1();
        const QMap<char, const char*> buttons = {{'A', "radioButton_Anonymous"},
                                                 {'U', "radioButton_Username"},
                                                 {'C', "radioButton_Certificate"},
                                                 {'s', "checkBox_StorePassword"}};
        if (first == 'p')
            choose("comboBox_SecurityPolicy", step.mid(1).toInt());
        else if (first == 'm')
            choose("comboBox_SecurityMode", step.mid(1).toInt());
        else if (first == 'h' || first == 'H')
            m_form->setVisibleGuiElements(Widget::GuiElements(first == 'h' ? 31 : 63));
        else if (first == 'S')
            m_form->setStorePassword(true);
        else if (buttons.contains(first))
            QTest::mouseClick(child<QAbstractButton>(buttons[first]), Qt::LeftButton, {},
                              QPoint(8, child<QWidget>(buttons[first])->height() / 2));
    }

    QString state() const
    {
        auto* policy = child<QComboBox>("comboBox_SecurityPolicy");
        auto* mode = child<QComboBox>("comboBox_SecurityMode");
        QString text = QString("%1 %2,").arg(policy->currentIndex()).arg(mode->currentIndex());
        for (int i = 0; i < 3; ++i) {
            if (mode->model()->index(i, 0).flags() & Qt::ItemIsEnabled)
                text += QString::number(i);
        }
        text += QString(" ") + "AUC"[m_form->userTokenType()];
        const auto enabled = [this](const char* name) { return child<QWidget>(name)->isEnabled(); };
        if (enabled("lineEdit_UserName"))
            text += " name";
        if (enabled("checkBox_StorePassword"))
            text += " store";
        if (m_form->isStorePassword())
            text += enabled("checkBox_StorePassword") ? "+" : " +";
        if (enabled("lineEdit_Password"))
            text += " password";
        if (enabled("lineEdit_Certificate") && enabled("toolButton_Certificate"))
            text += " certificate";
        if (enabled("lineEdit_PrivateKey") && enabled("toolButton_PrivateKey"))
            text += " key";
        return text;
    }

    template <class T>
    void log(void (Widget::*signal)(T), const char* name)
    {
        connect(m_form.get(), signal, this, [this, name](const T& value) {
            QString text;
            if constexpr (std::is_same_v<T, QString>)
                text = value;
            else
                text = QString::number(int(value));
            m_log += QString("%1 %2").arg(name, text.remove(prefix));
        });
    }
    void logSignals()
    {
        m_log.clear();
        log(&Widget::endpointUrlChanged, "url");
        log(&Widget::securityPolicyChanged, "policy");
        log(&Widget::securityModeChanged, "mode");
        log(&Widget::sessionNameChanged, "session");
        log(&Widget::userTokenTypeChanged, "token");
        log(&Widget::userNameChanged, "user");
        log(&Widget::passwordChanged, "password");
        log(&Widget::storePasswordToggled, "store");
        log(&Widget::certificateFileChanged, "certificate");
        log(&Widget::privateKeyFileChanged, "key");
        connect(m_form.get(), &Widget::serverConfigChanged, this, [this] { m_log += "config"; });
    }

    std::unique_ptr<Widget> m_form;
    QStringList m_log;
    QStringList m_dialog;
};

QTEST_MAIN(EndpointSettingsWidgetTest)
#include "tst_endpointsettingswidget.moc"
