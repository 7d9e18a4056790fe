#include "statustext_p.h"

#include "base/contrast_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "session/session.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QBrush>
#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

struct Sentence
{
    const char* name;
    const char* text;
};

constexpr Sentence sentences[] = {
    {"BadAggregateInvalidInputs", QT_TRANSLATE_NOOP("Status", "The values do not go together.")},
    {"BadArgumentsMissing", QT_TRANSLATE_NOOP("Status", "The method takes more arguments.")},
    {"BadAttributeIdInvalid", QT_TRANSLATE_NOOP("Status", "The node has no such attribute.")},
    {"BadCommunicationError",
     QT_TRANSLATE_NOOP("Status", "The connection, or the one behind the server, failed.")},
    {"BadConnectionClosed",
     QT_TRANSLATE_NOOP("Status", "The connection was lost before the server answered; whether it "
                                 "has carried this out is not known.")},
    {"BadDataEncodingUnsupported",
     QT_TRANSLATE_NOOP("Status", "The server cannot send the value in this encoding.")},
    {"BadDecodingError", QT_TRANSLATE_NOOP("Status", "What was sent could not be read.")},
    {"BadDeviceFailure", QT_TRANSLATE_NOOP("Status", "The device has a failure.")},
    {"BadEncodingError", QT_TRANSLATE_NOOP("Status", "The value cannot be sent.")},
    {"BadEncodingLimitsExceeded",
     QT_TRANSLATE_NOOP("Status", "The value is larger than one side takes.")},
    {"BadIndexRangeInvalid", QT_TRANSLATE_NOOP("Status", "The range of elements is not one.")},
    {"BadIndexRangeNoData", QT_TRANSLATE_NOOP("Status", "There are no elements in this range.")},
    {"BadInternalError", QT_TRANSLATE_NOOP("Status", "The server failed at it: see its log.")},
    {"BadInvalidArgument",
     QT_TRANSLATE_NOOP("Status", "An argument was not accepted; it is marked.")},
    {"BadInvalidState",
     QT_TRANSLATE_NOOP("Status", "This cannot be done in the state that the object is in.")},
    {"BadMethodInvalid", QT_TRANSLATE_NOOP("Status", "The object has no such method.")},
    {"BadMonitoredItemFilterUnsupported",
     QT_TRANSLATE_NOOP("Status", "The server does not know this filter.")},
    {"BadNoCommunication",
     QT_TRANSLATE_NOOP("Status", "The server has no connection to where the value comes from.")},
    {"BadNoData", QT_TRANSLATE_NOOP("Status", "There is no value.")},
    {"BadNodeIdInvalid", QT_TRANSLATE_NOOP("Status", "This is no NodeId that the server takes.")},
    {"BadNodeIdUnknown", QT_TRANSLATE_NOOP("Status", "The server has no such node, or no longer.")},
    {"BadNotConnected",
     QT_TRANSLATE_NOOP("Status", "The variable is not connected to where its value comes from.")},
    {"BadNotExecutable", QT_TRANSLATE_NOOP("Status", "The method cannot be called now.")},
    {"BadNotImplemented", QT_TRANSLATE_NOOP("Status", "The server has not implemented this.")},
    {"BadNotReadable",
     QT_TRANSLATE_NOOP("Status", "The attribute may not be read, or not by this user.")},
    {"BadNotSupported", QT_TRANSLATE_NOOP("Status", "The server does not support this.")},
    {"BadNotWritable", QT_TRANSLATE_NOOP("Status", "The attribute may not be written.")},
    {"BadNothingToDo", QT_TRANSLATE_NOOP("Status", "There was nothing to do.")},
    {"BadOutOfMemory", QT_TRANSLATE_NOOP("Status", "There is not enough memory.")},
    {"BadOutOfRange",
     QT_TRANSLATE_NOOP("Status", "The value is out of the range of its type, or of the node.")},
    {"BadOutOfService", QT_TRANSLATE_NOOP("Status", "The source of the value is out of service.")},
    {"BadRequestCancelledByClient", QT_TRANSLATE_NOOP("Status", "It was cancelled here.")},
    {"BadRequestTooLarge", QT_TRANSLATE_NOOP("Status", "It is more than the server takes.")},
    {"BadResourceUnavailable",
     QT_TRANSLATE_NOOP("Status", "The server needs something that it cannot get now.")},
    {"BadResponseTooLarge",
     QT_TRANSLATE_NOOP("Status", "The answer is larger than this application takes.")},
    {"BadSecurityModeInsufficient",
     QT_TRANSLATE_NOOP("Status", "The server allows this over an encrypted connection only.")},
    {"BadSensorFailure", QT_TRANSLATE_NOOP("Status", "The sensor has a failure.")},
    {"BadServiceUnsupported", QT_TRANSLATE_NOOP("Status", "The server does not do this at all.")},
    {"BadSessionClosed", QT_TRANSLATE_NOOP("Status", "There is no connection to the server.")},
    {"BadSessionIdInvalid", QT_TRANSLATE_NOOP("Status", "The server does not know the session.")},
    {"BadShutdown", QT_TRANSLATE_NOOP("Status", "The session has ended.")},
    {"BadTimeout", QT_TRANSLATE_NOOP("Status", "The server did not answer in time.")},
    {"BadTooManyArguments", QT_TRANSLATE_NOOP("Status", "The method takes fewer arguments.")},
    {"BadTooManyMonitoredItems",
     QT_TRANSLATE_NOOP("Status", "The server monitors no more values for anyone.")},
    {"BadTooManyOperations",
     QT_TRANSLATE_NOOP("Status", "It is more at a time than the server takes.")},
    {"BadTypeMismatch",
     QT_TRANSLATE_NOOP("Status", "The value is not of the data type that is asked for.")},
    {"BadUnexpectedError", QT_TRANSLATE_NOOP("Status", "Something failed unexpectedly.")},
    {"BadUserAccessDenied", QT_TRANSLATE_NOOP("Status", "This user may not do that.")},
    {"BadWaitingForInitialData", QT_TRANSLATE_NOOP("Status", "The server has no value yet.")},
    {"BadWriteNotSupported",
     QT_TRANSLATE_NOOP("Status",
                       "The server does not take this combination of value, status and times.")},
    {"GoodClamped", QT_TRANSLATE_NOOP("Status", "Taken, but limited to what the node can hold.")},
    {"GoodCompletesAsynchronously",
     QT_TRANSLATE_NOOP("Status", "Taken; the server goes on with it.")},
    {"GoodLocalOverride",
     QT_TRANSLATE_NOOP("Status", "The value was put in by hand where it comes from.")},
    {"UncertainInitialValue",
     QT_TRANSLATE_NOOP("Status", "It is a value to begin with, from no source.")},
    {"UncertainLastUsableValue",
     QT_TRANSLATE_NOOP("Status", "It is the last known value; its source does not update it.")},
    {"UncertainSensorNotAccurate",
     QT_TRANSLATE_NOOP("Status", "The sensor is at its limit or not calibrated.")},
    {"UncertainSubNormal", QT_TRANSLATE_NOOP("Status", "Fewer sources than needed are good.")},
};

} // namespace

QString statusSentence(UaStatusCode status)
{
    const UaString name = status.toString();
    const auto found = std::find_if(std::begin(sentences), std::end(sentences),
                                    [&name](const Sentence& s) { return name == s.name; });
    if (found != std::end(sentences))
        return QCoreApplication::translate("Status", found->text);
    if (status.isGood())
        return QString();
    return status.isBad() ? QCoreApplication::translate("Status", "The server refused it.")
                          : QCoreApplication::translate("Status", "The value is not certain.");
}

QString statusInWords(UaStatusCode status)
{
    const QString name = status.toString().toQString();
    const QString sentence = statusSentence(status);
    return sentence.isEmpty() ? name : name + QLatin1String(": ") + sentence;
}

QColor staleColor(const QPalette& palette)
{
    // The ground of every other row is nearer to that of the windows.
    return readable(palette.color(QPalette::Disabled, QPalette::Text),
                    palette.color(QPalette::Active, QPalette::AlternateBase), leastTextContrast);
}

QVariant staleForeground(bool isStale)
{
    if (!isStale)
        return {};
    // It is asked for in each cell, and not made there.
    static qint64 key = 0;
    static QBrush brush;
    const QPalette palette = QGuiApplication::palette();
    if (std::exchange(key, palette.cacheKey()) != palette.cacheKey())
        brush = staleColor(palette);
    return brush;
}

QString staleSentence()
{
    return QCoreApplication::translate("Status", "Not connected: this is as it was seen last.");
}

QString waitingSentence(const QvelSession* session)
{
    return session && session->state() == QvelSession::Connected
               ? QCoreApplication::translate("Status", "Waiting for the server ...")
               : statusSentence(OpcUa_BadSessionClosed);
}
