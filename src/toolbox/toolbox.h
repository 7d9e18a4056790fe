#pragma once

#include "../kestrelexport.h"

#include <QtCore/QStringList>
#include <QtWidgets/QWidget>

#include <memory>

/// A column of pages, each with a header that shows its title and a button that opens and closes
/// it. Any number of pages may be open at a time.
///
/// The tool box owns the pages that it holds. Titles follow Qt's convention for mnemonics: "&"
/// marks the key that opens and closes the page. User-interface thread only.
class KESTREL_EXPORT QvelToolBox : public QWidget
{
    Q_OBJECT
    /// A page that the titles are edited for; it neither opens nor closes a page.
    Q_PROPERTY(int currentIndex READ getCurrentIndex WRITE setCurrentIndex NOTIFY
                   currentIndexChanged DESIGNABLE true SCRIPTABLE true STORED true)
    Q_PROPERTY(QString currentItemText READ getCurrentItemText WRITE setCurrentItemText
                   DESIGNABLE true SCRIPTABLE true STORED false)
    /// All titles, joined with "|".
    Q_PROPERTY(QString itemTexts READ getItemTexts WRITE setItemTexts
                   DESIGNABLE true SCRIPTABLE true STORED true)
public:
    explicit QvelToolBox(QWidget* parent = nullptr);
    ~QvelToolBox() override;

    /// Number of pages.
    int count() const;
    /// The page at `index`; null if there is none.
    QWidget* widget(int index);
    int getCurrentIndex() const;
    /// Empty when there is no title at the current index.
    QString getCurrentItemText() const;
    QString getItemTexts() const;
    /// 200 x 200, whatever the pages.
    QSize sizeHint() const override;

Q_SIGNALS:
    void currentIndexChanged(int index);
    void currentItemTextChanged(QString sText);
    void itemTextsChanged(QStringList sTexts);

public Q_SLOTS:
    void setCurrentItemText(QString sText);
    /// Titles beyond the number of pages are kept for pages that come later; pages beyond the
    /// number of titles are called "Page_1" and so on by their position.
    void setItemTexts(QString sTexts);
    void addPage(QWidget* page);
    /// Takes `page` over, opens it and makes it current. An index that is out of range appends. A
    /// null page, or one that the tool box holds already, is refused with a warning.
    void insertPage(int index, QWidget* page);
    /// Gives the page back to the caller, who owns it from then on. The current index stays.
    void removePage(int index);
    void setCurrentIndex(int index);
    /// Keeps the headers together at the top while all pages are closed.
    void pageVisibilityChanged(bool bVisible);

private:
    class Private;
    std::unique_ptr<Private> d;
};
