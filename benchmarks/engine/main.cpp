// SPDX-License-Identifier: MIT
// Measures what the program adds to the engine of the on-device model, in turns with the engine
// alone.
//
//   measure_engine FOLDER_OF_THE_ENGINE [--runs N]
//
// The folder holds llama-server and llama-bench (scripts/get-engine). The models are made here.
#include "benchmarks/Summary.h"
#include "benchmarks/engine/Conversation.h"
#include "benchmarks/engine/DirectEngine.h"
#include "tests/support/ModelMaker.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <iostream>
#include <optional>
#include <stop_token>
#include <thread>

using namespace bench;
using namespace Qt::StringLiterals;

namespace {

/// Threads that want a processor all the time.
class Load {
public:
    explicit Load(int threads) {
        for (int i = 0; i < threads; ++i)
            m_threads.emplace_back([](const std::stop_token& stop) {
                while (!stop.stop_requested()) {
                }
            });
    }

private:
    std::vector<std::jthread> m_threads;
};

void writeModel(const QString& path, const tests::TinyModel& model) {
    QFile file(path);
    const QByteArray bytes = tests::modelFile(model);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("the model cannot be written");
}

/// The program's own memory in MiB, its children not counted.
double proportionalSetSize() {
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("the memory cannot be read");
    for (const QByteArray& line : file.readAll().split('\n'))
        if (line.startsWith("Pss:"))
            return line.simplified().split(' ').at(1).toDouble() / 1'024;
    throw std::runtime_error("the memory is not told");
}

class Measurement {
public:
    explicit Measurement(const QString& engineFolder)
        : m_server(engineFolder + u"/llama-server"_s)
        , m_ownProgram(engineFolder + u"/llama-bench"_s) {
        m_paths.programFolders = {engineFolder};
        m_paths.runtimeFolders = {m_folder.filePath(u"run"_s)};
    }

    void run(int runs) {
        measureMemory(); // first: what the others leave on the heap would hide it
        measureFirstWords(runs);
        measurePrewarming("tiny model", tests::TinyModel::sentence(), runs);
        measurePrewarming("200 MB model", tests::TinyModel::heavy(), runs);
        measurePrewarming("1 GB model", tests::TinyModel::large(), runs);
        measureRate("tokens a second, tiny model", tests::TinyModel::endless(), 256, runs);
        measureRate("tokens a second, 200 MB model", tests::TinyModel::heavy(), 256, runs);
        constexpr auto large = "tokens a second, 1 GB model";
        measureRate(large, tests::TinyModel::large(), 48, runs);
        for (const int threads : {1, 2}) {
            const Load load(threads);
            std::printf("beside %d busy thread%s: ", threads, threads == 1 ? "" : "s");
            measureRate(large, tests::TinyModel::large(), 24, runs);
        }
    }

private:
    QString useModel(const tests::TinyModel& model) {
        const QString data = m_folder.filePath(u"data"_s);
        QDir().mkpath(data + u"/models"_s);
        const QString path = data + u'/' + platform::LlamaServerPaths::modelFileName();
        writeModel(path, model);
        m_paths.dataFolders = {data};
        return path;
    }

    void measureFirstWords(int runs) {
        const QString model = useModel(tests::TinyModel::sentence());
        std::vector<double> cold;
        std::vector<double> warm;
        std::vector<double> directCold;
        std::vector<double> directWarm;
        // The first round only warms the caches of the system.
        for (int round = -1; round < runs; ++round) {
            {
                Conversation conversation(m_paths);
                const double first = conversation.turn(u"Hello"_s).firstWord;
                const double second = conversation.turn(u"Again"_s).firstWord;
                if (round >= 0) {
                    cold.push_back(first);
                    warm.push_back(second);
                }
            }
            const Clock::time_point began = Clock::now();
            DirectEngine direct(m_server, model, m_folder.filePath(u"direct.sock"_s));
            direct.waitUntilReady();
            direct.firstWord();
            const std::chrono::duration<double, std::milli> first = Clock::now() - began;
            const double second = direct.firstWord();
            if (round >= 0) {
                directCold.push_back(first.count());
                directWarm.push_back(second);
            }
        }
        print("first word, cold", "ms", cold, directCold);
        print("first word, warm", "ms", warm, directWarm);
    }

    /// The first word with instructions as long as the program's: from an engine that is not there
    /// yet, from one that was let get ready while the user typed, and from one that has answered
    /// before.
    void measurePrewarming(const char* name, const tests::TinyModel& kind, int runs) {
        useModel(kind);
        const QString instructions(330, u'x');
        platform::GenerationOptions options;
        options.maximumResponseTokens = 8;
        std::vector<double> cold;
        std::vector<double> prewarmed;
        std::vector<double> warm;
        for (int round = -1; round < runs; ++round) {
            std::optional<Conversation> conversation;
            conversation.emplace(m_paths, instructions);
            const double first = conversation->turn(u"Hello"_s, options).firstWord;
            const double second = conversation->turn(u"Again"_s, options).firstWord;
            conversation.reset(); // one engine at a time
            conversation.emplace(m_paths, instructions);
            conversation->type(std::chrono::seconds(5));
            const double typed = conversation->turn(u"Hello"_s, options).firstWord;
            if (round < 0)
                continue;
            cold.push_back(first);
            warm.push_back(second);
            prewarmed.push_back(typed);
        }
        std::printf(
            "first word in ms, %s: cold %.1f, after five seconds of typing %.1f, warm %.1f\n", name,
            summarise(cold).median, summarise(prewarmed).median, summarise(warm).median);
        std::fflush(stdout);
    }

    void measureRate(const char* name, const tests::TinyModel& kind, int tokens, int runs) {
        const QString model = useModel(kind);
        platform::GenerationOptions options;
        options.maximumResponseTokens = tokens;
        std::vector<double> ours;
        std::vector<double> own;
        for (int round = -1; round < runs; ++round) {
            double rate = 0;
            {
                Conversation conversation(m_paths);
                conversation.turn(u"Hello"_s, options); // the engine loads the model
                rate = conversation.turn(u"Again"_s, options).tokensPerSecond();
            }
            const double ownRate = ownTokensPerSecond(m_ownProgram, model, tokens);
            if (round >= 0) {
                ours.push_back(rate);
                own.push_back(ownRate);
            }
        }
        print(name, "/s", ours, own);
    }

    void measureMemory() {
        useModel(tests::TinyModel::sentence());
        const double before = proportionalSetSize();
        Conversation conversation(m_paths);
        const double idle = proportionalSetSize();
        for (int i = 0; i < 20; ++i)
            conversation.turn(u"Hello"_s);
        std::printf("memory of the program in MiB: %.1f at the start, +%.1f with the model object "
                    "and the network thread, +%.1f with a session of 20 turns\n",
                    before, idle - before, proportionalSetSize() - idle);
    }

    static void print(const char* name, const char* unit, const std::vector<double>& ours,
                      const std::vector<double>& alone) {
        const Summary program = summarise(ours);
        const Summary engine = summarise(alone);
        std::printf("%s: program %.1f %s [%.1f–%.1f], engine alone %.1f %s [%.1f–%.1f], "
                    "ratio %.2f\n",
                    name, program.median, unit, program.minimum, program.maximum, engine.median,
                    unit, engine.minimum, engine.maximum, program.median / engine.median);
        std::fflush(stdout);
    }

    QTemporaryDir m_folder;
    QString m_server;
    QString m_ownProgram;
    platform::LlamaServerPaths m_paths;
};

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int runs = arguments.value(2) == u"--runs" ? arguments.value(3).toInt() : 10;
    if (arguments.size() < 2 || runs < 1) {
        std::cerr << "usage: measure_engine FOLDER_OF_THE_ENGINE [--runs N]\n";
        return 2;
    }
    try {
        Measurement(QDir(arguments.at(1)).absolutePath()).run(runs);
    } catch (const std::exception& error) {
        std::cerr << "measure_engine: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
