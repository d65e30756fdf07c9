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

/// A scripted server that listens, and what a client of it needs to run.
class HttpFixture {
public:
    /// On a free port when none is given.
    explicit HttpFixture(quint16 port = 0) {
        if (!server.listen(port))
            qFatal("Port %d cannot be used (%s). Run the tests where no model server runs.", port,
                   qPrintable(server.errorString()));
    }

    platform::HttpClient client() {
        return {*network, platform::HttpEndpoint::loopback(server.port())};
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
        task = scope.start(consume(
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
        server.enqueue(script);
        return read(client(), std::move(request));
    }

    /// Waits for the end of a stream.
    template <class SeenStream>
    static std::shared_ptr<SeenStream> whole(std::shared_ptr<SeenStream> seen) {
        if (!QTest::qWaitFor([&] { return seen->hasEnded; }, 60'000))
            qFatal("a stream has not ended within its limit");
        return seen;
    }

    // What ends first stands last.
    platform::MainExecutor main;
    platform::TaskScope scope{main};
    std::optional<platform::NetworkThread> network{std::in_place};
    ScriptedServer server;
    platform::TaskHandle task; // of the stream watched last
};

} // namespace tests
