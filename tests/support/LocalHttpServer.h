#pragma once

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QTcpServer>

class QTcpSocket;

// An HTTP server on the loopback interface for tests that fetch from the
// Internet. It answers every request with one canned reply, or never answers
// at all (the connection stays open until the server goes), and records what
// it was asked.
class LocalHttpServer : public QTcpServer
{
public:
    struct Reply {
        int status = 200;
        QByteArray contentType = "image/png";
        QByteArray body;
        QByteArray location; // sent as the Location header when not empty
    };

    // A server that answers every request with body (status 200), or one
    // that accepts connections and never answers.
    explicit LocalHttpServer(QByteArray body = {}, bool answer = true);

    void setReply(const Reply &reply) { m_reply = reply; }
    // The address of name on this server: http://127.0.0.1:PORT/name.
    QString url(const QString &name) const;

    // Connections accepted so far.
    int connections = 0;
    // The path of every complete request received, in order.
    QStringList requestedPaths;
    // Connections that are still open.
    int openConnections() const;

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket *socket);

    Reply m_reply;
    bool m_answer;
    QList<QPointer<QTcpSocket>> m_sockets;
};
