#pragma once

#include "common/olvexexport.h"

// DICalConfirmFunctions: how the confirmation panel reads a calibration's pending state from
// the realtime data, and the two commands it sends the data acquisition service (the operator's
// answer to a prompt, and a line for the system's message list).

#include "common/xml.h"

#include <QString>

#include <QtGlobal>
#include <optional>

namespace olvex {

class CurrentDataReader;
class DataInterface;
class MessageLog;

// The message type of every line the confirmation panel raises (0x6001).
inline constexpr quint32 kCalConfirmMsgType = 24577;

// The parsed XValue of a calibration parameter's "1m" item, or a null document: no item, empty
// text (CSET-0084 logged when the data has expired), text that does not parse (XMLDOM-0001
// logged) or no CalStart element (CSET-0085 logged). Host errors propagate.
OLVEX_CORE_EXPORT XmlDocument GetCalConfirmDocument(MessageLog *log, CurrentDataReader &reader,
                                                    qint32 pid);
// Its two halves: the item's trimmed text (nullopt without an item or with an empty text,
// CSET-0084 logged when the data has expired), and the CalStart element of such a text.
OLVEX_CORE_EXPORT std::optional<QString> GetCalConfirmText(MessageLog *log,
                                                           CurrentDataReader &reader, qint32 pid);
OLVEX_CORE_EXPORT XmlNode CalConfirmNodeOfText(MessageLog *log, const QString &text, qint32 pid);

// The text of the operator's answer: CR LF joined lines with CalConfirm and CalCancel items.
OLVEX_CORE_EXPORT QString CalPendingPromptActionText(DataInterface &dataInterface, qint32 pid,
                                                     bool confirm, bool cancel);
// Posts the answer ("CSET-0046"); false when the writer refused it (logged). Host errors
// propagate.
OLVEX_CORE_EXPORT bool SendCalPendingPromptAction(DataInterface &dataInterface, MessageLog *log,
                                                  qint32 pid, bool confirm, bool cancel);

// The text of a RaiseMsg command; pid 0 leaves the pid attribute out.
OLVEX_CORE_EXPORT QString RaiseMsgCommandText(DataInterface &dataInterface, qint32 pid,
                                              quint32 msgTypeId, const QString &text);
// Posts it ("CSET-0096"); false when the writer refused it (logged).
OLVEX_CORE_EXPORT bool SendRaiseMsgCommand(DataInterface &dataInterface, MessageLog *log,
                                           qint32 pid, quint32 msgTypeId, const QString &text);

// What a pending calibration's row shows, read from its document.
struct PendingCalTexts
{
    QString reason;
    QString startTime;
    // "This calibration will be automatically confirmed at:" (or "canceled"), CR LF, deadline.
    QString defaultAction;

    bool operator==(const PendingCalTexts &) const = default;
};

// The five elements of a CalStart element, read in one pass over its children (the panel reads
// every calibration parameter every minute).
struct PendingCalState
{
    bool pending = false; // CalConfirmPending; false when missing or not yes/no
    PendingCalTexts texts;
};
OLVEX_CORE_EXPORT PendingCalState ReadPendingCalState(const XmlNode &calStart);

// The same from a whole document (its first CalStart element).
OLVEX_CORE_EXPORT bool IsCalConfirmPending(const XmlDocument &document);
OLVEX_CORE_EXPORT PendingCalTexts ReadPendingCalTexts(const XmlDocument &document);
OLVEX_CORE_EXPORT QString DefaultActionText(bool defaultConfirm, const QString &expirationTime);

// The lines raised in the system's message list, CR and LF removed. pidText is the PID in
// display form.
OLVEX_CORE_EXPORT QString AddPendingCalMessage(const QString &pidText, const QString &name,
                                               const PendingCalTexts &texts);
OLVEX_CORE_EXPORT QString PendingCalChangedMessage(const QString &pidText, const QString &name,
                                                   const PendingCalTexts &texts);
OLVEX_CORE_EXPORT QString ClearPendingCalMessage(const QString &pidText, const QString &name,
                                                 const QString &finalStartTimeText);
OLVEX_CORE_EXPORT QString NoPendingCalsMessage();

} // namespace olvex
