#pragma once

#include <QObject>
#include <QString>

// A holder of one status text that raises StatusChanged like clsStatus does.
// Its getter gives the empty text: listeners are told, not asked.
class clsEvent : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    QString StatusString() const { return QString(); }
    void SetStatusString(const QString& vsText);

signals:
    void StatusChanged();

private:
    QString msStatusString;
};
