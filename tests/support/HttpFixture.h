// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Concurrency/Produce.h"
#include "Platform/Http/HttpClient.h"
#include "Platform/Http/HttpError.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TaskRunner.h"

#include <QTest>

#include <memory>

namespace tests {

/// What has come of a response's lines so far.
using SeenLines = Seen<QByteArray>;

inline platform::Task<void> yieldLines(platform::HttpClient client, platform::HttpRequest request,
                                       platform::StreamContinuation<QByteArray> lines) {
    platform::HttpBody body = co_await client.bytes(std::move(request));
    while (auto line = co_await body.nextLine())
        lines.yield(std::move(*line));
}

template <class T>
platform::Task<T> runThere(platform::TaskScope& scope, platform::Task<T> task) {
    co_return co_await platform::runOn(scope, std::move(task));
}

/// A scripted server, and what a client of it needs to run.
class HttpFixture {
public:
    ~HttpFixture() {
        server.reset();
        network.reset();
        scope.reset();
    }

    platform::HttpClient client() const {
        return {*network, platform::HttpEndpoint::loopback(server->port())};
    }

    /// Runs the task on the network thread until it ends.
    template <class T>
    TaskOutcome<T> run(platform::Task<T> task) {
        return runTask(main, runThere(network->scope(), std::move(task)));
    }
    TaskOutcome<platform::HttpResponse> data(platform::HttpRequest request = {}) {
        return run(client().data(std::move(request)));
    }

    /// Starts a request whose lines the network thread reads and the test watches.
    std::shared_ptr<SeenLines> watch(platform::HttpClient from,
                                     platform::HttpRequest request = {}) {
        const auto seen = std::make_shared<SeenLines>();
        task = scope->start(consume(
            platform::produce<QByteArray>(
                network->scope(),
                [&](auto lines) { return yieldLines(std::move(from), std::move(request), lines); }),
            seen));
        return seen;
    }
    std::shared_ptr<SeenLines> watch() { return watch(client()); }

    /// All lines of the response.
    std::shared_ptr<SeenLines> read(platform::HttpClient from, platform::HttpRequest request = {}) {
        return whole(watch(std::move(from), std::move(request)));
    }
    std::shared_ptr<SeenLines> read(const Script& script, platform::HttpRequest request = {}) {
        server->enqueue(script);
        return read(client(), std::move(request));
    }

    /// Waits for the end of a stream.
    template <class Element>
    static std::shared_ptr<Seen<Element>> whole(std::shared_ptr<Seen<Element>> seen) {
        if (!QTest::qWaitFor([&] { return seen->hasEnded; }, 60'000))
            qFatal("a stream has not ended within its limit");
        return seen;
    }

    platform::MainExecutor main;
    std::unique_ptr<platform::TaskScope> scope = std::make_unique<platform::TaskScope>(main);
    std::unique_ptr<platform::NetworkThread> network = std::make_unique<platform::NetworkThread>();
    std::unique_ptr<ScriptedServer> server = std::make_unique<ScriptedServer>();
    platform::TaskHandle task; // of the stream watched last
};

} // namespace tests
