#include "sim/clsSimFaults.h"

#include <QStringList>

namespace {

bool ReadRate(const QString& vsValue, double& rdRate)
{
    bool lbOk = false;
    const double ldValue = vsValue.toDouble(&lbOk);
    if (!lbOk || ldValue < 0 || ldValue > 1)
        return false;
    rdRate = ldValue;
    return true;
}

bool ReadCount(const QString& vsValue, int& rlCount)
{
    bool lbOk = false;
    const int llValue = vsValue.toInt(&lbOk, 0);
    if (!lbOk || llValue < 0)
        return false;
    rlCount = llValue;
    return true;
}

// "12:3" gives key 12 and value 3.
bool ReadPair(const QString& vsValue, qint32& rlKey, int& rlValue)
{
    const QStringList lcParts = vsValue.split(QLatin1Char(':'));
    if (lcParts.size() != 2)
        return false;
    bool lbKey = false;
    bool lbValue = false;
    rlKey = lcParts[0].toInt(&lbKey, 0);
    rlValue = lcParts[1].toInt(&lbValue, 0);
    return lbKey && lbValue && rlKey >= 0 && rlValue >= 0 && rlValue <= 255;
}
}

bool clsSimFaults::Parse(const QString& vsSpec, QString& rsError)
{
    for (const QString& lsItem : vsSpec.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const int llEquals = lsItem.indexOf(QLatin1Char('='));
        const QString lsName = (llEquals < 0 ? lsItem : lsItem.left(llEquals)).trimmed();
        const QString lsValue = llEquals < 0 ? QString() : lsItem.mid(llEquals + 1).trimmed();
        bool lbOk = true;
        qint32 llKey = 0;
        int llValue = 0;
        if (lsName == QLatin1String("drop"))
            lbOk = ReadRate(lsValue, DropRate);
        else if (lsName == QLatin1String("drop-next"))
            lbOk = ReadCount(lsValue, DropNext);
        else if (lsName == QLatin1String("corrupt"))
            lbOk = ReadRate(lsValue, CorruptRate);
        else if (lsName == QLatin1String("corrupt-next"))
            lbOk = ReadCount(lsValue, CorruptNext);
        else if (lsName == QLatin1String("wrong-func"))
            lbOk = ReadRate(lsValue, WrongFuncRate);
        else if (lsName == QLatin1String("wrong-func-next"))
            lbOk = ReadCount(lsValue, WrongFuncNext);
        else if (lsName == QLatin1String("late"))
            lbOk = ReadRate(lsValue, LateRate);
        else if (lsName == QLatin1String("late-next"))
            lbOk = ReadCount(lsValue, LateNext);
        else if (lsName == QLatin1String("late-by")) {
            int llMs = 0;
            lbOk = ReadCount(lsValue, llMs);
            LateByMs = quint32(llMs);
        } else if (lsName == QLatin1String("late-listening"))
            LateKeepsListening = true;
        else if (lsName == QLatin1String("silent-from"))
            lbOk = ReadCount(lsValue, SilentFromRequest);
        else if (lsName == QLatin1String("new-id-from"))
            lbOk = ReadCount(lsValue, ChangeIdFromRequest);
        else if (lsName == QLatin1String("new-id"))
            lbOk = ReadId(lsValue, NewId);
        else if (lsName == QLatin1String("page-state")) {
            lbOk = ReadPair(lsValue, llKey, llValue);
            PageState[llKey] = llValue;
        } else if (lsName == QLatin1String("read-status")) {
            lbOk = ReadPair(lsValue, llKey, llValue);
            ReadStatusOfPage[llKey] = llValue;
        } else if (lsName == QLatin1String("bad-read"))
            lbOk = ReadRate(lsValue, BadReadRate);
        else if (lsName == QLatin1String("erase-refused")) {
            lbOk = ReadCount(lsValue, llValue);
            EraseRefused[llValue] = true;
        } else if (lsName == QLatin1String("plain-zero-cs"))
            PlainZeroChecksum = true;
        else if (lsName == QLatin1String("silent-d9"))
            SilentOnDownloadStart = true;
        else if (lsName == QLatin1String("refuse-d9"))
            RefuseDownload = true;
        else if (lsName == QLatin1String("only-func"))
            lbOk = ReadCount(lsValue, OnlyFunc) && OnlyFunc <= 255;
        else if (lsName == QLatin1String("seed")) {
            int llSeed = 0;
            lbOk = ReadCount(lsValue, llSeed);
            Seed = quint32(llSeed);
        } else {
            rsError = QStringLiteral("unknown fault \"%1\"").arg(lsName);
            return false;
        }
        if (!lbOk) {
            rsError = QStringLiteral("bad value \"%1\" for fault \"%2\"").arg(lsValue, lsName);
            return false;
        }
    }
    return true;
}

QString clsSimFaults::Help()
{
    return QStringLiteral(
        "drop=P            drop a reply with probability P (0..1)\n"
        "drop-next=N       drop the next N replies\n"
        "corrupt=P         change one byte of a reply with probability P\n"
        "corrupt-next=N    change one byte of the next N replies\n"
        "wrong-func=P      answer with another function code with probability P\n"
        "wrong-func-next=N the same for the next N replies\n"
        "late=P            answer after the host's time-out with probability P\n"
        "late-next=N       the same for the next N replies\n"
        "late-by=MS        how late a late answer is (default 1200)\n"
        "late-listening    a late display still hears and answers the retry\n"
        "silent-from=K     answer nothing from request K on (a pulled cable)\n"
        "new-id-from=K     report new-id from request K on\n"
        "new-id=A.B.C.D.E.F.G.H  the identity reported after new-id-from\n"
        "page-state=PAGE:S answer S to the page-state request of PAGE\n"
        "read-status=PAGE:S answer status S to every read of PAGE\n"
        "bad-read=P        answer read status 0 with probability P\n"
        "erase-refused=PAGE refuse to erase PAGE\n"
        "plain-zero-cs     send a zero checksum without the following 0x01\n"
        "silent-d9         no answer to the firmware download start\n"
        "refuse-d9         answer the firmware download start with \"can't download\"\n"
        "only-func=F       drop, corrupt, wrong-func and late hit only answers to function F (0x33: writes)\n"
        "seed=N            seed of the fault rates (default 1)\n");
}

bool clsSimFaults::ReadId(const QString& vsValue, QByteArray& rcId)
{
    QStringList lcParts = vsValue.split(QLatin1Char('.'));
    if (!lcParts.isEmpty() && lcParts.last().isEmpty())
        lcParts.removeLast();
    if (lcParts.size() != 8)
        return false;
    QByteArray lcId;
    for (const QString& lsPart : lcParts) {
        bool lbOk = false;
        const int llByte = lsPart.toInt(&lbOk);
        if (!lbOk || llByte < 0 || llByte > 255)
            return false;
        lcId.append(char(llByte));
    }
    rcId = lcId;
    return true;
}
