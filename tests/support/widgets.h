#pragma once

/// \file
/// The widgets with texts of their own that need no session and are no scalar editors, in the
/// states that have texts of their own.

#include "support/memorysettings.h"

#include <Kestrel/OpcUaStatusCodes>
#include <Kestrel/QvelCertificateManager>
#include <Kestrel/QvelCertificateView>
#include <Kestrel/QvelDialogWidgetArray>
#include <Kestrel/QvelDialogWidgetMatrix>
#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryWidget>
#include <Kestrel/QvelDisplayDialog>
#include <Kestrel/QvelEndpointSettingsWidget>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelNewCertificateDlg>
#include <Kestrel/QvelSession>
#include <Kestrel/QvelToolBox>
#include <Kestrel/QvelTrustDialog>
#include <Kestrel/QvelWidgetVariant>

#include <QtWidgets/QtWidgets>

struct WidgetCase
{
    const char* name;
    std::function<QWidget*()> create;
};

template <class Field>
QWidget* createEnumField()
{
    QvelEnumInfo info;
    info.kind = QvelEnumInfo::Enumeration;
    info.values = {{1, "one"}, {2, "two"}};
    auto* field = new Field;
    field->setEnumInfo(info);
    return field;
}

/// With "full.der" of a folder, which stands for the stores of the certificate manager, too.
inline QList<WidgetCase> widgetCases(const QString& folder)
{
    const UaPkiCertificate certificate =
        UaPkiCertificate::fromDERFile(QFile::encodeName(folder + "full.der"));
    return {
        {"QvelDisplayDialog",
         [] {
             auto* dialog = new QvelDisplayDialog;
             dialog->setText("Some text");
             return dialog;
         }},
        {"QvelDisplayDialog read only",
         [] { return new QvelDisplayDialog(QvelDisplayDialog::ReadOnly); }},
        {"QvelWidgetVariant", [] { return new QvelWidgetVariant; }},
        {"QvelDialogWidgetArray", [] { return new QvelDialogWidgetArray(UaVariant()); }},
        {"QvelDialogWidgetMatrix", [] { return new QvelDialogWidgetMatrix(UaVariant()); }},
        {"QvelEditWidgetArray", createEnumField<QvelEditWidgetArray>},
        {"QvelEditWidgetMatrix", createEnumField<QvelEditWidgetMatrix>},
        {"QvelDiscoveryWidget",
         [] {
             static MemorySettings settings;
             return new QvelDiscoveryWidget(QvelDiscoveryWidget::OpcUa, &settings, 1000, "s");
         }},
        {"QvelEndpointSettingsWidget",
         [] {
             auto* form = new QvelEndpointSettingsWidget;
             form->setSecurityPolicies(
                 {"urn:other", "http://opcfoundation.org/UA/SecurityPolicy#Z"});
             form->setUserTokenType(OpcUa_UserTokenType_Certificate);
             return form;
         }},
        {"QvelCertificateManager",
         [folder] {
             auto* manager = new QvelCertificateManager("a", "b", folder, folder, folder, folder,
                                                        "own.der", "own.pem", QIcon(), true);
             auto* view = manager->findChild<QTreeView*>();
             view->setCurrentIndex(view->model()->index(0, 0));
             return manager;
         }},
        {"QvelNewCertificateDlg",
         [] { return new QvelNewCertificateDlg("name", "part", false, true, nullptr); }},
        {"QvelNewCertificateDlg with faults",
         [] {
             auto* dialog = new QvelNewCertificateDlg("name", "part", false, true, nullptr);
             dialog->setRSAKeyStrengths({1024, 3072});
             dialog->setCountry("1");
             dialog->accept();
             return dialog;
         }},
        {"QvelCertificateView",
         [certificate] {
             auto* view = new QvelCertificateView;
             view->setCertificate(certificate);
             return view;
         }},
        {"QvelTrustDialog",
         [certificate] {
             QvelCertificateQuestion question;
             question.certificate = certificate;
             question.findings = {{OpcUa_BadCertificateUntrusted, "peer", "Detail."}};
             return new QvelTrustDialog(question);
         }},
        {"QvelToolBox",
         [] {
             auto* box = new QvelToolBox;
             for (const char* text : {"one", "two"})
                 box->addPage(new QCheckBox(text));
             return box;
         }},
    };
}
