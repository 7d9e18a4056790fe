#include "figure.h"

#include <Kestrel/QvelArrayModel>
#include <Kestrel/QvelDialogWidgetArray>
#include <Kestrel/QvelDialogWidgetMatrix>
#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelMatrixModel>
#include <Kestrel/UaStackTypeArray>
#include <Kestrel/UaString>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <numeric>

namespace {

constexpr int million = 1'000'000;
constexpr int clicks = 1000;
constexpr int runs = 5;

// The trivial model.
class BareModel : public QAbstractTableModel
{
public:
    BareModel(int rows, const QString& text) : m_rows(rows), m_text(text) {}

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : m_rows;
    }
    int columnCount(const QModelIndex& = {}) const override { return 1; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role != Qt::DisplayRole)
            return QVariant();
        return m_text.isEmpty() ? QString::number(index.row()) : m_text;
    }
    void append()
    {
        beginInsertRows(QModelIndex(), m_rows, m_rows);
        ++m_rows;
        endInsertRows();
    }
    void reset()
    {
        beginResetModel();
        endResetModel();
    }

private:
    int m_rows;
    const QString m_text;
};

// That of the table in a dialog, so that both views show as many rows.
QSize tableSize;

struct BareView
{
    explicit BareView(int rows, const QString& text = {}) : model(rows, text)
    {
        view.horizontalHeader()->hide();
        view.horizontalHeader()->setStretchLastSection(true);
        view.setModel(&model);
        view.resize(tableSize);
    }

    BareModel model;
    QTableView view;
};

// Until all is laid out and painted, which one change after the other sets off.
void settle()
{
    for (int i = 0; i < 10; ++i)
        QCoreApplication::processEvents();
}

UaVariant integers(int count)
{
    QList<OpcUa_Int32> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0);
    UaVariant value;
    value.setInt32Array(numbers);
    return value;
}

const QString twentyCharacters = QStringLiteral("Water treatment, 3/b");

UaVariant strings(int count)
{
    UaVariant value;
    value.setStringArray(QList<UaString>(count, UaString(twentyCharacters)));
    return value;
}

UaVariant matrix(OpcUa_UInt32 rows, OpcUa_UInt32 columns)
{
    QvelDialogWidgetMatrix dialog((UaVariant()));
    UaStackTypeArray<OpcUa_UInt32> lengths;
    lengths.resize(2);
    lengths[0] = rows;
    lengths[1] = columns;
    dialog.setInitialValue(OpcUaType_Int32, lengths);
    return dialog.value(nullptr);
}

// Waits for the first paint of what is inside a shown window.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QTableView* view) { view->viewport()->installEventFilter(this); }
    void wait() const
    {
        while (!m_painted)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        m_painted = m_painted || event->type() == QEvent::Paint;
        return false;
    }

private:
    bool m_painted = false;
};

double openDialog(const UaVariant& value)
{
    return milliseconds([&] {
        QvelDialogWidgetArray dialog(value);
        PaintWatch watch(dialog.findChild<QTableView*>());
        dialog.show();
        watch.wait();
        QCoreApplication::processEvents();
    });
}

double openBare(int rows, const QString& text = {})
{
    return milliseconds([&] {
        BareView bare(rows, text);
        PaintWatch watch(&bare.view);
        bare.view.show();
        watch.wait();
        QCoreApplication::processEvents();
    });
}

void reportOpening(Figures& figures)
{
    const UaVariant numbers = integers(million);
    const UaVariant texts = strings(million);
    openDialog(numbers);
    openBare(million);
    const auto [ours, bare] = medians(
        runs, [&] { return openDialog(numbers); }, [] { return openBare(million); });
    figures.report("open-1M-int32", ours / bare, 3);
    const auto [oursText, bareText] = medians(
        runs, [&] { return openDialog(texts); },
        [] { return openBare(million, twentyCharacters); });
    figures.report("open-1M-string", oursText / bareText, 3);
    const UaVariant more = integers(10 * million);
    const auto [ten, one] = medians(
        runs, [&] { return openDialog(more); }, [&] { return openDialog(numbers); });
    figures.report("open-10M-over-1M-int32", ten / one, 12);
    const UaVariant moreTexts = strings(10 * million);
    const auto [tenTexts, oneText] = medians(
        runs, [&] { return openDialog(moreTexts); }, [&] { return openDialog(texts); });
    figures.report("open-10M-over-1M-string", tenTexts / oneText, 12);
}

// Each click is shown before the next one.
void reportAdding(Figures& figures)
{
    const auto [ours, bare] = medians(
        3,
        [] {
            QvelDialogWidgetArray dialog(integers(million));
            dialog.show();
            QCoreApplication::processEvents();
            QToolButton* add = nullptr;
            for (auto* button : dialog.findChildren<QToolButton*>())
                add = button->text() == QLatin1String("+") ? button : add;
            return milliseconds([&] {
                for (int i = 0; i < clicks; ++i) {
                    add->click();
                    QCoreApplication::processEvents();
                }
            });
        },
        [] {
            BareView other(million);
            other.view.show();
            QCoreApplication::processEvents();
            return milliseconds([&] {
                for (int i = 0; i < clicks; ++i) {
                    other.model.append();
                    QCoreApplication::processEvents();
                }
            });
        });
    figures.report("add-1000-at-1M", ours / bare, 3);
}

void reportCopying(Figures& figures)
{
    const auto copy = [](const UaVariant& value) {
        return milliseconds([&] {
            std::vector<UaVariant> copies(100'000, value);
            asm volatile("" ::"r"(copies.data()) : "memory");
        });
    };
    const UaVariant large = integers(million);
    const UaVariant one = integers(1);
    const UaVariant thousand = integers(1000);
    const auto [ours, single] = medians(
        runs, [&] { return copy(large); }, [&] { return copy(one); });
    figures.report("copy-1M-over-1", ours / single, 2);

    QvelEditWidgetArray field;
    field.show();
    QCoreApplication::processEvents();
    const auto hand = [&](const UaVariant& value) {
        return milliseconds([&] {
            for (int i = 0; i < 100; ++i) {
                field.setValue(value);
                QCoreApplication::processEvents();
            }
        });
    };
    const auto [most, few] = medians(
        runs, [&] { return hand(large); }, [&] { return hand(thousand); });
    figures.report("hand-over-1M-over-1000", most / few, 3);
}

// The texts of the elements that a screen shows.
void reportTexts(Figures& figures)
{
    constexpr int rows = 50;
    constexpr int screens = 1000;
    const auto viaModel = [](UaVariant value) {
        const QvelArrayModel model(&value, false);
        std::vector<QModelIndex> cells;
        for (int row = 0; row < rows; ++row)
            cells.push_back(model.index(row, 0));
        return cpuMilliseconds([&] {
            for (int i = 0; i < screens; ++i) {
                for (const QModelIndex& cell : cells) {
                    const QVariant text = model.data(cell, Qt::DisplayRole);
                    asm volatile("" ::"r"(&text) : "memory");
                }
            }
        });
    };
    UaVariant numbers = integers(rows);
    const auto* ints = static_cast<OpcUa_Int32*>(numbers.detach()->Value.Array.Elements);
    const auto [ours, bare] = medians(
        runs, [&] { return viaModel(numbers); },
        [&] {
            return cpuMilliseconds([&] {
                for (int i = 0; i < screens * rows; ++i) {
                    const QVariant text = QString::number(ints[i % rows]);
                    asm volatile("" ::"r"(&text) : "memory");
                }
            });
        });
    figures.report("texts-int32", ours / bare, 2);
    UaVariant texts = strings(rows);
    const auto* stack = static_cast<OpcUa_String*>(texts.detach()->Value.Array.Elements);
    const auto [oursText, bareText] = medians(
        runs, [&] { return viaModel(texts); },
        [&] {
            return cpuMilliseconds([&] {
                for (int i = 0; i < screens * rows; ++i) {
                    const QVariant text =
                        QString::fromUtf8(stack[i % rows].Data, stack[i % rows].Length);
                    asm volatile("" ::"r"(&text) : "memory");
                }
            });
        });
    figures.report("texts-string", oursText / bareText, 2);
}

void reportReshaping(Figures& figures)
{
    UaStackTypeArray<OpcUa_UInt32> lengths;
    lengths.resize(2);
    lengths[0] = 2000;
    lengths[1] = 500;
    const UaVariant value = matrix(1000, 1000);
    const auto [ours, bare] = medians(
        runs,
        [&] {
            QvelDialogWidgetMatrix dialog(value);
            dialog.show();
            settle();
            auto* model = static_cast<QvelMatrixModel*>(dialog.findChild<QTableView*>()->model());
            // The first change takes the dialog's value apart from ours.
            model->setData(model->index(0, 0), 1, Qt::EditRole);
            return cpuMilliseconds([&] {
                model->setDimensions(lengths);
                settle();
            });
        },
        [] {
            BareView other(million);
            other.view.show();
            settle();
            return cpuMilliseconds([&] {
                other.model.reset();
                // New lengths are new labels, which a reset alone does not paint again.
                other.view.verticalHeader()->viewport()->update();
                settle();
            });
        });
    figures.report("reshape-1M", ours / bare, 3);
}

// Strings of many lines, as a person opens them and edits one.
void reportLongTexts(Figures& figures)
{
    const QString line = QStringLiteral("Water treatment, 3/b\n");
    const QString text = line.repeated(100'000 / line.size());
    UaVariant texts = strings(200);
    UaVariant one = strings(1);
    const auto fill = [](UaVariant& value, const QString& with) {
        QvelArrayModel model(&value, false);
        for (int row = 0; row < model.rowCount(); ++row)
            model.setData(model.index(row, 0), with);
    };
    fill(texts, text);
    fill(one, QStringLiteral("Water treatment ").repeated(10'000'000 / 16));
    const auto [ours, bare] = medians(
        3, [&] { return openDialog(texts); }, [&] { return openBare(200, text); });
    figures.report("open-200-of-100kB", ours / bare, 1);

    QvelDialogWidgetArray dialog(one);
    auto* table = dialog.findChild<QTableView*>();
    dialog.show();
    settle();
    table->setCurrentIndex(table->model()->index(0, 0));
    figures.report("edit-10MB", milliseconds([&] {
                       table->edit(table->currentIndex());
                       settle();
                   }),
                   2000, "ms");
}

// In kilobytes, of this process.
double peakMemory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).simplified().split(' ').first().toDouble();
    }
    return 0;
}

// Opens one of the two and tells the peak.
int measurePeak(const QString& what)
{
    if (what == QLatin1String("bare")) {
        openBare(million);
    } else if (what == QLatin1String("bare-text")) {
        openBare(million, twentyCharacters);
    } else {
        openDialog(what == QLatin1String("int32") ? integers(million) : strings(million));
    }
    std::printf("%.0f\n", peakMemory());
    return 0;
}

void reportMemory(Figures& figures)
{
    const auto peakOf = [](const QString& what) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--peak"), what});
        child.waitForFinished(-1);
        return child.readAllStandardOutput().toDouble();
    };
    const double bare = peakOf(QStringLiteral("bare"));
    constexpr double ints = double(million) * sizeof(OpcUa_Int32) / 1024;
    figures.report("peak-1M-int32-over-elements", (peakOf(QStringLiteral("int32")) - bare) / ints,
                   2);
    // A string's own bytes: its structure, and its text as the allocator rounds it.
    constexpr double texts = double(million) * (sizeof(OpcUa_String) + 32) / 1024;
    figures.report("peak-1M-string-over-elements",
                   (peakOf(QStringLiteral("string")) - peakOf(QStringLiteral("bare-text"))) / texts,
                   2);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    {
        QvelDialogWidgetArray dialog(integers(100));
        dialog.show();
        settle();
        tableSize = dialog.findChild<QTableView*>()->size();
    }
    if (arguments.value(1) == QLatin1String("--peak"))
        return measurePeak(arguments.value(2));
    // Memory comes fresh from the system at every size, and not from what a run before gave back.
    mallopt(M_MMAP_THRESHOLD, 1'000'000);
    Figures figures("composite");
    reportOpening(figures);
    reportAdding(figures);
    reportCopying(figures);
    reportTexts(figures);
    reportReshaping(figures);
    reportLongTexts(figures);
    reportMemory(figures);
    return figures.result();
}
