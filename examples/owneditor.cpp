// An editor of the host's own, for a range: it keeps the contract of kestrel's editors, so that
// whatever takes one of them takes this one.

#include <Kestrel/QvelWidgetBase>
#include <Kestrel/UaVariant>

#include <QApplication>
#include <QDataWidgetMapper>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QStandardItemModel>

// A range as an array of two Doubles, the low one first.
class RangeEditor : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit RangeEditor(QvelWidgetFlags flags = {}, QWidget* parent = nullptr)
        : QvelWidgetBase(flags, parent), m_low(new QDoubleSpinBox), m_high(new QDoubleSpinBox)
    {
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins({});
        for (QDoubleSpinBox* box : {m_low, m_high}) {
            box->setRange(-1e6, 1e6);
            box->setReadOnly(flags.testFlag(ReadOnly));
            box->setFrame(!flags.testFlag(HideFrame));
            box->installEventFilter(this); // the base passes on that the focus leaves
            layout->addWidget(box);
            connect(box, &QDoubleSpinBox::valueChanged, this, [this] {
                Q_EMIT valueChanged(value());
                Q_EMIT rangeChanged(m_low->value(), m_high->value());
            });
        }
        setFocusProxy(m_low);
    }

    UaVariant value(bool* ok = nullptr) const override
    {
        const bool valid = m_low->value() < m_high->value();
        if (ok)
            *ok = valid;
        UaVariant value;
        if (valid)
            value.setDoubleArray({m_low->value(), m_high->value()});
        return value; // empty for invalid input
    }

    void setValue(const UaVariant& value) override
    {
        const QList<double> range = value.toDoubleArray();
        if (range.size() != 2) // of another type: ignored
            return;
        m_low->setValue(range[0]);
        m_high->setValue(range[1]);
    }

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void rangeChanged(double low, double high);

private:
    QDoubleSpinBox* m_low;
    QDoubleSpinBox* m_high;
};

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    UaVariant range;
    range.setDoubleArray({2, 12});
    QStandardItemModel model(1, 1);
    model.setData(model.index(0, 0), QVariant::fromValue(range));

    QWidget window;
    auto* layout = new QHBoxLayout(&window);
    auto* editor = new RangeEditor;
    layout->addWidget(new QLabel("Limits"));
    layout->addWidget(editor);
    QDataWidgetMapper mapper; // finds `value`, the user property of all editors
    mapper.setModel(&model);
    mapper.addMapping(editor, 0);
    mapper.toFirst();
    window.show();
    return QApplication::exec();
}

#include "owneditor.moc"
