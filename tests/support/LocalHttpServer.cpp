#include "LocalHttpServer.h"

#include <QTcpSocket>

LocalHttpServer::LocalHttpServer(QByteArray body, bool answer)
    : m_answer(answer)
{
    m_reply.body = std::move(body);
    connect(this, &QTcpServer::newConnection, this, &LocalHttpServer::onNewConnection);
    listen(QHostAddress::LocalHost);
}

QString LocalHttpServer::url(const QString &name) const
{
    return QStringLiteral("http://127.0.0.1:%1/%2").arg(serverPort()).arg(name);
}

int LocalHttpServer::openConnections() const
{
    int open = 0;
    for (const QPointer<QTcpSocket> &socket : m_sockets) {
        if (socket && socket->state() == QAbstractSocket::ConnectedState)
            ++open;
    }
    return open;
}

void LocalHttpServer::onNewConnection()
{
    while (QTcpSocket *socket = nextPendingConnection()) {
        ++connections;
        m_sockets << socket;
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { onReadyRead(socket); });
    }
}

void LocalHttpServer::onReadyRead(QTcpSocket *socket)
{
    // The request may come in pieces; it is complete at its empty line.
    QByteArray request = socket->property("request").toByteArray() + socket->readAll();
    socket->setProperty("request", request);
    if (!request.contains("\r\n\r\n"))
        return;
    socket->setProperty("request", QByteArray());
    const QList<QByteArray> requestLine = request.left(request.indexOf("\r\n")).split(' ');
    requestedPaths << QString::fromLatin1(requestLine.value(1));
    if (!m_answer)
        return;
    QByteArray head = "HTTP/1.1 " + QByteArray::number(m_reply.status) + " Canned\r\nContent-Type: "
                      + m_reply.contentType + "\r\nContent-Length: " + QByteArray::number(m_reply.body.size())
                      + "\r\nConnection: close\r\n";
    if (!m_reply.location.isEmpty())
        head += "Location: " + m_reply.location + "\r\n";
    socket->write(head + "\r\n" + m_reply.body);
    socket->disconnectFromHost();
}
