#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelEndpointSettingsWidget>

using Widget = QvelEndpointSettingsWidget;

static const QString prefix = "http://opcfoundation.org/UA/SecurityPolicy#";

class EndpointSettingsWidgetTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_form = std::make_unique<Widget>();
        m_form->show();
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
        connect(m_form.get(), &Widget::serverConfigChanged, this, [this] { m_log += "; "; });
    }

    // A state is "policy mode, modes that can be chosen" and "token, inputs that are enabled". A
    // step is a click on: p0 to p2 a policy, m0 to m2 a mode, A U C a user token, s "Store"; or
    // xNAME: a letter typed into that field. h and H hide and show "Store", S is the host's
    // "Store".
    void steps()
    {
        const char* const rows[][4] = {
            {"", "p1", "1 2,12 A", "mode 3; policy Basic128Rsa15; "},
            {"p1", "m0", "1 2,12 A", ""}, // disabled
            {"p1", "m1", "1 1,12 A", "mode 2; "},
            {"p1 m1", "p2", "2 1,12 A", "policy Basic256; "}, // Sign is kept
            {"p2 m1", "p0", "0 0,0 A", "mode 1; policy None; "},
            {"", "s", "0 0,0 A", ""}, // disabled
            {"", "U", "0 0,0 U name store", "token 1; "},
            {"", "C", "0 0,0 C certificate key", "token 2; "},
            {"U", "s", "0 0,0 U name store+ password", "store 1; "},
            {"U s", "s", "0 0,0 U name store", "store 0; "},
            {"U s", "A", "0 0,0 A +", "token 0; "},
            {"U s C", "U", "0 0,0 U name store+ password", "token 1; "},
            {"h", "U", "0 0,0 U name store password", "token 1; "}, // a user name is enough
            {"h U", "C", "0 0,0 C certificate key", "token 2; "},
            {"C", "S", "0 0,0 C + certificate key", "store 1; "},
            {"", "xEndpointUrl", "0 0,0 A", "url x; "},
            {"", "xSessionName", "0 0,0 A", "session x; "},
            {"U", "xUserName", "0 0,0 U name store", "user x; "},
            {"U s", "xPassword", "0 0,0 U name store+ password", "password x; "},
            {"C", "xCertificate", "0 0,0 C certificate key", "certificate x; "},
            {"C", "xPrivateKey", "0 0,0 C certificate key", "key x; "},
        };
        for (const auto& [before, step, expected, signalled] : rows) {
            init();
            for (const QString& each : QString(before).split(' ', Qt::SkipEmptyParts))
                take(each);
            m_log.clear();
            take(step);
            const QString told = QString("%1|%2: ").arg(before, step);
            QCOMPARE(told + state(), told + expected);
            QCOMPARE(told + m_log, told + signalled);
            QCOMPARE(m_form->endpointUrl() + m_form->sessionName() + m_form->userName() +
                         m_form->password() + m_form->certificateFile() + m_form->privateKeyFile(),
                     step[0] == 'x' ? "x" : "");
        }
    }

    void hostSets()
    {
        m_form->setPassword("secret"); // the field is disabled
        QCOMPARE(m_form->password(), "secret");
        auto* url = child<QLineEdit>("lineEdit_EndpointUrl");
        m_form->setEndpointUrl("opc.tcp://" + QString(300, 'h'));
        QCOMPARE(url->cursorPosition(), 0); // shows its beginning
        url->setCursorPosition(7);
        m_form->setEndpointUrl(m_form->endpointUrl()); // an echo leaves the user alone
        QCOMPARE(url->cursorPosition(), 7);
        for (const QString& unknown : {prefix + "basic256", QString("Basic256"), QString()})
            m_form->setSecurityPolicy(unknown);
        QCOMPARE(m_form->securityPolicy(), prefix + "None");
        const std::pair<quint32, int> modes[] = {{0, 1}, {2, 2}, {4, 0}, {3, 3}, {0xffffffff, 0}};
        for (const auto& [mode, effective] : modes) {
            m_form->setSecurityMode(OpcUa_MessageSecurityMode(mode));
            QCOMPARE(int(m_form->securityMode()), effective);
        }
        const std::pair<QList<int>, const char*> types[] = {
            {{}, "AUC0"}, {{2, 1, 0}, "AUC0"},   {{0}, "A0"}, {{1}, "U1"},
            {{2}, "C2"},  {{2, 1, 2, 3}, "UC1"}, {{3}, "2"},  {{77}, "2"}};
        for (const auto& [supported, expected] : types) {
            QList<OpcUa_UserTokenType> list;
            for (const int type : supported)
                list.append(OpcUa_UserTokenType(type));
            m_form->setUserTokenType(OpcUa_UserTokenType_Certificate);
            m_form->setUserTokenType(OpcUa_UserTokenType_IssuedToken);
            m_form->setSupportedUserTokenTypes(list);
            QString enabled;
            for (const char* name : {"Anonymous", "Username", "Certificate"})
                if (child<QWidget>(QByteArray("radioButton_") + name)->isEnabled())
                    enabled += name[0];
            QCOMPARE(enabled + QString::number(m_form->userTokenType()), expected);
        }
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

    void offersPolicies()
    {
        const QString none = prefix + "None", old = prefix + "Basic256", aes = prefix + "Aes";
        const QString fallen = "mode 1; policy None; ";
        const std::tuple<QStringList, QStringList, QString> rows[] = {
            {{aes, old}, {none, aes, old}, {}}, // kept, though moved
            {{aes}, {none, aes}, fallen},
            {{old, none, aes, old, ""}, {none, old, aes}, {}},
            {{}, {none, prefix + "Basic128Rsa15", old}, {}},
            {{"urn:x", "urn:y#", old}, {none, "urn:x", "urn:y#", old}, {}}};
        for (const auto& [offered, effective, signalled] : rows) {
            init();
            take("p2");
            m_log.clear();
            m_form->setSecurityPolicies(offered);
            QCOMPARE(m_form->securityPolicies(), effective);
            QCOMPARE(m_form->securityPolicy(), signalled.isEmpty() ? old : none);
            QCOMPARE(m_log, signalled);
            for (int i = 0; i < effective.size(); ++i) {
                const QString name = child<QComboBox>("comboBox_SecurityPolicy")->itemText(i);
                QVERIFY(name == effective[i].section('#', 1) || name == effective[i]);
                m_form->setSecurityPolicy(effective[i]);
                QCOMPARE(m_form->securityPolicy(), effective[i]);
            }
        }
    }

    void picksFiles()
    {
        pickFiles("Certificate", "Open Server Certificate;Certificate (*.der *.pem)");
        init();
        pickFiles("PrivateKey", "Open Private Key;Private Key (*.pem)");
    }

private:
    void pickFiles(const QByteArray& name, const char* titleAndFilter)
    {
        const bool key = name == "PrivateKey";
        const QTemporaryDir temporary;
        const QDir dir(QFileInfo(temporary.path()).canonicalFilePath());
        QVERIFY(dir.mkpath("a") && dir.mkpath("b"));
        QFile file(dir.filePath("b/c d.pem"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QString opened, asked;
        const auto browse = [&](const QString& pick) {
            const ModalUser user([&](QDialog* dialog) {
                auto* chooser = static_cast<QFileDialog*>(dialog);
                opened = chooser->directory().path();
                asked = chooser->windowTitle() + ";" + chooser->nameFilters().join(';');
                if (pick == "gone")
                    return m_form.reset();
                auto* line = chooser->findChild<QLineEdit*>("fileNameEdit");
                line->setText(pick);
                QTest::keyClick(line, pick.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
            });
            QTest::mouseClick(child<QWidget>("toolButton_" + name), Qt::LeftButton);
        };
        const auto directory = [&](const QString& set = QString()) {
            if (!set.isNull())
                key ? m_form->setPrivateKeyFilePath(set) : m_form->setCertificateFilePath(set);
            return key ? m_form->privateKeyFilePath() : m_form->certificateFilePath();
        };
        QCOMPARE(directory(dir.filePath("a")), dir.filePath("a"));
        take("C");
        m_log.clear();
        browse(QString()); // cancelled
        QCOMPARE(opened, dir.filePath("a"));
        QCOMPARE(asked, titleAndFilter);
        QVERIFY(m_log.isEmpty());
        browse(file.fileName());
        QCOMPARE(m_log, (key ? "key " : "certificate ") + file.fileName() + "; ");
        QCOMPARE(directory(), dir.filePath("b"));
        directory(dir.filePath("a"));
        browse(QString());
        QCOMPARE(opened, dir.filePath("b")); // of the file that the field names
        browse("gone");                      // the form goes while it asks
        QVERIFY(!m_form && !QApplication::activeModalWidget());
    }

    template <class W>
    W* child(const QByteArray& name) const
    {
        auto* found = m_form->findChild<W*>(QString(name));
        return found ? found : (qFatal("no %s", name.constData()), found);
    }
    void take(const QString& step)
    {
        const QMap<QChar, QByteArray> buttons = {{'A', "radioButton_Anonymous"},
                                                 {'U', "radioButton_Username"},
                                                 {'C', "radioButton_Certificate"},
                                                 {'s', "checkBox_StorePassword"}};
        const QChar first = step[0];
        if (first == 'p' || first == 'm') {
            auto* combo = child<QComboBox>(first == 'p' ? "comboBox_SecurityPolicy"
                                                        : "comboBox_SecurityMode");
            combo->showPopup();
            QAbstractItemView* view = combo->view();
            const QModelIndex item = combo->model()->index(step.mid(1).toInt(), 0);
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                              view->visualRect(item).center());
            combo->hidePopup();
        } else if (first == 'x') {
            QTest::keyClicks(child<QLineEdit>("lineEdit_" + step.mid(1).toLatin1()), "x");
        } else if (first == 'h' || first == 'H') {
            m_form->setVisibleGuiElements(Widget::GuiElements(first == 'h' ? 31 : 63));
        } else if (first == 'S') {
            m_form->setStorePassword(true);
        } else {
            auto* button = child<QWidget>(buttons[first]);
            QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
        }
    }
    QString state() const
    {
        auto* mode = child<QComboBox>("comboBox_SecurityMode");
        QString text = QString("%1 %2,")
                           .arg(child<QComboBox>("comboBox_SecurityPolicy")->currentIndex())
                           .arg(mode->currentIndex());
        for (int i = 0; i < 3; ++i)
            if (mode->model()->index(i, 0).flags() & Qt::ItemIsEnabled)
                text += QString::number(i);
        text += QString(" ") + "AUC"[m_form->userTokenType()];
        const std::pair<const char*, const char*> inputs[] = {
            {"lineEdit_UserName", " name"},
            {"checkBox_StorePassword", " store"},
            {"lineEdit_Password", " password"},
            {"toolButton_Certificate", " certificate"},
            {"toolButton_PrivateKey", " key"}};
        for (const auto& [input, name] : inputs) {
            const bool enabled = child<QWidget>(input)->isEnabled();
            text += enabled ? name : "";
            if (m_form->isStorePassword() && name == QLatin1String(" store"))
                text += enabled ? "+" : " +";
        }
        return text;
    }
    template <class T>
    void log(void (Widget::*signal)(T), const char* name)
    {
        connect(m_form.get(), signal, this, [this, name](const T& value) {
            if constexpr (std::is_same_v<T, QString>)
                m_log += QString("%1 %2").arg(name, QString(value).remove(prefix));
            else
                m_log += QString("%1 %2").arg(name).arg(int(value));
        });
    }

    std::unique_ptr<Widget> m_form;
    QString m_log;
};

QTEST_MAIN(EndpointSettingsWidgetTest)
#include "tst_endpointsettingswidget.moc"
