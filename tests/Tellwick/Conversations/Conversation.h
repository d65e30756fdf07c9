// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Store/TextList.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "tests/Tellwick/Conversations/ScriptedModel.h"
#include "tests/Tellwick/Conversations/ScriptedModelServer.h"

#include <QTemporaryDir>
#include <QTest>

namespace tests {

/// What a stored record holds.
struct StoredSession {
    QStringList roles;
    QStringList contents;
    QDateTime updatedAt;
    qint64 row; ///< the store's own name for the record
};

/// A controller with everything around it: a scripted model, a store in a folder of its own, the
/// main thread's tasks. Made anew for each test.
class Conversation {
public:
    Conversation() = default;
    ~Conversation() { quit(); }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /// Makes the controller, as the start of the program does.
    tellwick::ChatViewModel& start() {
        m_container.emplace(tellwick::conversationStore(folder()));
        m_context.emplace(*m_container, autosaveDelay);
        m_producers.emplace(executor);
        m_controller = makeController(*m_context);
        controller = m_controller.get();
        return *controller;
    }

    /// The same for a window, which owns its controller and ends before quit().
    std::unique_ptr<tellwick::ChatViewModel> startForWindow() {
        start();
        return std::move(m_controller);
    }

    /// Makes one more controller over a context.
    std::unique_ptr<tellwick::ChatViewModel> makeController(platform::ModelContext& context) {
        return std::make_unique<tellwick::ChatViewModel>(context, models(), executor);
    }

    /// The scripted models.
    tellwick::ModelManager::Sources models() { return server.sources(model, *m_producers); }

    /// Lets the server list these models, refreshes, and selects the one of that name.
    bool select(const QStringList& listed, const QString& name) {
        server.listed = listed;
        controller->modelManager.startRefresh();
        const auto find = [&] {
            for (const auto& backend : controller->modelManager.ollamaBackends.value())
                if (backend->info().name() == name)
                    return backend;
            return tellwick::ModelManager::Backend();
        };
        if (!QTest::qWaitFor([&] { return find() != nullptr; }, 5000))
            return false;
        controller->modelManager.select(find());
        return true;
    }

    /// Takes everything down in the order of the program's end, also in the middle of a turn.
    void quit() {
        controller = nullptr;
        m_controller.reset();
        m_producers.reset();
        m_context.reset();
        m_container.reset();
    }

    /// Sends this text; true when a turn has begun.
    bool send(const QString& text) {
        controller->draft = text;
        controller->send();
        return controller->isGenerating.value();
    }

    /// Sends this text and gives the turn once the model has been asked for it.
    AskedTurn& ask(const QString& text) {
        const auto before = model.turns.size();
        if (!send(text) || !QTest::qWaitFor([&] { return model.turns.size() > before; }, 5000))
            qFatal("the model was not asked");
        return model.turns.back();
    }

    /// The same, once the reply begins with what the model says at first.
    AskedTurn& ask(const QString& text, const QString& said) {
        AskedTurn& turn = ask(text);
        turn.say(said);
        if (!waitForReply(said))
            qFatal("the reply is not shown");
        return turn;
    }

    /// Sends this text and gives the request once the selected model of the server has it.
    ScriptedModelServer::Request& askServer(const QString& text) {
        const auto before = server.requests.size();
        if (!send(text) || !QTest::qWaitFor([&] { return server.requests.size() > before; }, 5000))
            qFatal("the server was not asked");
        return server.requests.back();
    }

    /// Waits for the end of the running turn.
    bool settle() {
        return QTest::qWaitFor([this] { return !controller->isGenerating.value(); }, 20000);
    }

    /// Lets everything run that has been posted to the main thread by now.
    bool drain() {
        bool isDrained = false;
        executor.post([&] { isDrained = true; });
        return QTest::qWaitFor([&] { return isDrained; }, 5000);
    }

    /// Waits until the reply reads so.
    bool waitForReply(const QString& text) {
        return QTest::qWaitFor([&] { return contents().value(contents().size() - 1) == text; },
                               5000);
    }

    /// One whole turn.
    bool talk(const QString& text, const QString& reply) {
        const auto& turn = ask(text);
        turn.say(reply);
        turn.end();
        return settle();
    }

    /// The texts of the messages on screen.
    QStringList contents() const {
        QStringList contents;
        for (const auto& message : controller->messages.value())
            contents.append(message.content.toString());
        return contents;
    }

    /// "u" for each message of the user, "a" for each of the assistant.
    QString roles() const {
        QString roles;
        for (const auto& message : controller->messages.value())
            roles.append(message.role() == tellwick::ChatMessage::Role::user ? u'u' : u'a');
        return roles;
    }

    /// The records in the store, the newest first.
    QList<StoredSession> stored() const {
        const auto container = tellwick::conversationStore(folder());
        auto database = container.openForReading();
        platform::Statement row(*database, "SELECT rowid, updatedAt, roles, contents"
                                           " FROM ChatSession ORDER BY updatedAt DESC");
        QList<StoredSession> sessions;
        while (row.step())
            sessions.append(
                {*platform::textListFromJson(row.text(2)), *platform::textListFromJson(row.text(3)),
                 QDateTime::fromString(QString::fromUtf8(row.text(1)), Qt::ISODateWithMs),
                 row.number(0)});
        return sessions;
    }

    /// Puts a record into the store before the start.
    void store(const QStringList& roles, const QStringList& contents,
               const QDateTime& updatedAt = QDateTime::fromSecsSinceEpoch(0)) const {
        const auto container = tellwick::conversationStore(folder());
        platform::ModelContext context(container);
        const auto session = std::make_shared<tellwick::ChatSession>();
        session->roles = roles;
        session->contents = contents;
        session->updatedAt = updatedAt;
        context.insert(session);
        context.save();
    }

    QString file() const { return folder() + QStringLiteral("/conversation.sqlite"); }
    QString folder() const { return m_folder.filePath(QStringLiteral("tellwick")); }
    platform::ModelContext& context() { return *m_context; }

    platform::MainExecutor executor;
    ScriptedModel model;
    ScriptedModelServer server;
    std::chrono::milliseconds autosaveDelay = std::chrono::hours(1);
    tellwick::ChatViewModel* controller = nullptr;

private:
    QTemporaryDir m_folder;
    std::optional<platform::ModelContainer> m_container;
    std::optional<platform::ModelContext> m_context;
    std::optional<platform::TaskScope> m_producers;
    std::unique_ptr<tellwick::ChatViewModel> m_controller;
};

} // namespace tests
