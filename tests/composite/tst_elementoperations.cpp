// Random operations on the models of arrays and matrices, beside a plain list.

#include "elementcases.h"
#include "support/warnings.h"

#include <Kestrel/QvelArrayModel>
#include <Kestrel/QvelMatrixModel>
#include <Kestrel/UaStackTypeArray>

#include <QtCore/QStringDecoder>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

namespace {

constexpr quint32 seed = 20240229;
constexpr int operationsPerType = 600; // on arrays, and as many on matrices
constexpr int mostElements = 40;

// The tester does not accept flags for no cell at all, which these models have.
template <class Model>
class Tested : public Model
{
public:
    explicit Tested(UaVariant* value) : Model(value, false) {}
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return index.isValid() ? Model::flags(index) : Qt::ItemFlags();
    }
    const QAbstractItemModelTester tester{this,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest};
};

bool holds(const UaVariant& value, const QList<UaVariant>& elements)
{
    bool equal = value.arraySize() == elements.size();
    for (int i = 0; equal && i < elements.size(); ++i)
        equal = value.elementAt(i) == elements.at(i);
    return equal;
}

// A text or a whole value, as the type takes it.
bool store(QAbstractItemModel& model, int row, const UaVariant& element)
{
    const QModelIndex index = model.index(row, 0);
    const bool asText = element.type() != OpcUaType_Boolean && element.type() <= OpcUaType_DateTime;
    if (!asText)
        return model.setData(index, QVariant::fromValue(element), Qt::UserRole);
    using Flag = QStringDecoder::Flag;
    QStringDecoder decoder(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    const QString text = decoder.decode(element.toString().bytes());
    return model.setData(index, text, Qt::EditRole);
}

void resize(QList<UaVariant>& elements, int count, const UaVariant& null)
{
    while (elements.size() > count)
        elements.removeLast();
    while (elements.size() < count)
        elements.append(null);
}

struct Snapshot
{
    UaVariant value;
    QList<UaVariant> elements;
};

} // namespace

class ElementOperationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void initTestCase()
    {
        qInfo("seed %u, %d operations", seed, 2 * operationsPerType * int(elementCases().size()));
    }

    void operations_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("isMatrix");
        for (int i = 0; i < elementCases().size(); ++i) {
            QTest::addRow("%s array", elementCases().at(i).name) << i << false;
            QTest::addRow("%s matrix", elementCases().at(i).name) << i << true;
        }
    }
    void operations()
    {
        QFETCH(int, index);
        QFETCH(bool, isMatrix);
        const ElementCase& c = elementCases().at(index);
        const UaVariant null = nullOf(c.type);
        QRandomGenerator random(seed + quint32(2 * index + isMatrix));
        UaVariant value = emptyOf(c.type, isMatrix);
        QList<UaVariant> oracle;
        QList<Snapshot> snapshots;
        std::unique_ptr<Tested<QvelArrayModel>> array;
        std::unique_ptr<Tested<QvelMatrixModel>> matrix;
        QAbstractItemModel* model = nullptr;
        if (isMatrix)
            model = (matrix = std::make_unique<Tested<QvelMatrixModel>>(&value)).get();
        else
            model = (array = std::make_unique<Tested<QvelArrayModel>>(&value)).get();

        for (int i = 0; i < operationsPerType; ++i) {
            const int operation = random.bounded(10);
            if (operation < 4 && !oracle.isEmpty()) {
                const int row = random.bounded(int(oracle.size()));
                UaVariant element = c.random(random);
                QVERIFY(store(*model, row, element));
                oracle[row] = element;
            } else if (operation < 7 && isMatrix) {
                // More rows than dimensions, or the tester rejects the header change.
                UaStackTypeArray<OpcUa_UInt32> lengths;
                lengths.resize(OpcUa_UInt32(1 + random.bounded(2)));
                OpcUa_UInt32 count = 1;
                for (OpcUa_UInt32& length : lengths)
                    count *= length = OpcUa_UInt32(2 + random.bounded(mostElements / 8));
                QVERIFY(matrix->setDimensions(lengths));
                resize(oracle, int(count), null);
            } else if (operation < 6) {
                if (oracle.size() < mostElements) {
                    QVERIFY(isMatrix || array->addElement());
                    if (!isMatrix)
                        oracle.append(null);
                }
            } else if (operation == 6) {
                QVERIFY(isMatrix || array->removeElement());
                if (!isMatrix && !oracle.isEmpty())
                    oracle.removeLast();
            } else if (operation == 7) {
                snapshots.append({value, oracle});
                if (snapshots.size() > 10)
                    snapshots.removeFirst();
            } else if (operation == 8 && !snapshots.isEmpty()) {
                const Snapshot& old = snapshots.at(random.bounded(int(snapshots.size())));
                value = old.value;
                oracle = old.elements;
                if (isMatrix)
                    matrix->refresh();
                else
                    array->refresh();
            } else {
                for (const Snapshot& snapshot : std::as_const(snapshots))
                    QVERIFY(holds(snapshot.value, snapshot.elements));
            }
            QCOMPARE(model->rowCount(), int(oracle.size()));
            QVERIFY(holds(value, oracle));
        }
        for (const Snapshot& snapshot : std::as_const(snapshots))
            QVERIFY(holds(snapshot.value, snapshot.elements));
    }
};

QTEST_GUILESS_MAIN(ElementOperationsTest)
#include "tst_elementoperations.moc"
