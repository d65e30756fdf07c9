// SPDX-License-Identifier: MIT
#include "Setup/TerminalSetup.h"

#include "Platform/Desktop/PathTexts.h"
#include "Platform/Desktop/TerminationSignals.h"
#include "Setup/ModelList.h"
#include "Setup/SetupController.h"
#include "Setup/SetupError.h"
#include "Setup/SetupTexts.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <unistd.h>

#include <cstdio>

namespace setup {

using namespace Qt::StringLiterals;
using platform::toPath;
using platform::toText;

namespace {

constexpr int statusWrongCall = 2;
constexpr int statusStopped = 130;

void say(const QString& text) {
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
}

struct Wishes {
    QString model; ///< by name; empty: what suits the machine, where there is none
    QString file;
};

/// What the arguments say; none where they make no sense.
std::optional<Wishes> readArguments(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.addOption({u"terminal"_s, {}});
    parser.addOption({u"model"_s, {}, u"name"_s});
    parser.addOption({u"file"_s, {}, u"path"_s});
    const bool isRight = parser.parse(arguments) && parser.positionalArguments().isEmpty() &&
                         !(parser.isSet(u"model"_s) && parser.isSet(u"file"_s));
    return isRight ? std::optional(Wishes{parser.value(u"model"_s), parser.value(u"file"_s)})
                   : std::nullopt;
}

/// How far the download is: one line of a terminal, which is written over and over. Nothing where
/// nobody looks on.
class ProgressLine {
public:
    explicit ProgressLine(qint64 size)
        : m_size(size) {}
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void follow(qint64 received) {
        constexpr qint64 step = 250; // milliseconds
        if (!m_isTerminal || (m_sinceShown.isValid() && m_sinceShown.elapsed() < step))
            return;
        m_sinceShown.start();
        m_rate.add(received);
        write("\r\x1b[K" + texts::progress(received, m_size, m_rate.perSecond()).toUtf8());
    }
    void clear() const {
        if (m_sinceShown.isValid())
            write("\r\x1b[K");
    }

private:
    static void write(const QByteArray& text) {
        std::fputs(text.constData(), stderr);
        std::fflush(stderr);
    }

    const bool m_isTerminal = isatty(STDERR_FILENO) == 1;
    const qint64 m_size;
    QElapsedTimer m_sinceShown;
    TransferRate m_rate;
};

class TerminalSetup {
public:
    TerminalSetup(platform::MainExecutor& executor, Wishes wishes)
        : m_surroundings(SetupSurroundings::ofThisProgram())
        , m_wishes(std::move(wishes))
        , m_paths(platform::LlamaServerPaths::of(m_surroundings.directories,
                                                 toText(m_surroundings.programs.programs)))
        , m_folder(m_surroundings.directories)
        , m_download(m_folder, m_surroundings.limits)
        , m_scope(std::make_unique<platform::TaskScope>(executor)) {}

    int run() {
        m_scope->start(work());
        const platform::TerminationSignals stopped([this] {
            m_scope.reset();
            say(u"Stopped. Tellwick works without its on-device model; Tellwick Set-up goes on "
                "where this stopped."_s);
            QCoreApplication::exit(statusStopped);
        });
        return QCoreApplication::exec();
    }

private:
    platform::Task<void> work() {
        int status = 0;
        try {
            co_await getModel();
            co_await getEngine();
        } catch (const platform::LocalizedError& error) {
            say(error.errorDescription());
            status = m_status;
        }
        QCoreApplication::exit(status);
    }

    platform::Task<void> getModel() {
        if (!m_wishes.file.isEmpty()) {
            m_folder.link(std::filesystem::absolute(toPath(m_wishes.file)));
            say(u"The on-device model is now %1."_s.arg(m_wishes.file));
            co_return;
        }
        if (m_wishes.model.isEmpty() && m_paths.modelFile())
            co_return;
        const ModelOffer offer = chosenOffer();
        say(u"Fetching the on-device model: %1, licence %2, %3."_s.arg(offer.name, offer.licence,
                                                                       texts::size(offer.size)));
        say(u"From %1 into %2"_s.arg(offer.address.toString(), toText(m_folder.modelPath())));
        if (const qint64 there = m_folder.sizeOfPart(offer); there > 0)
            say(u"%1 of it are there already."_s.arg(texts::size(there)));
        say(u"Ctrl-C stops this; Tellwick Set-up goes on with it at any time."_s);
        ProgressLine line(offer.size);
        co_await m_download.fetch(offer, [&line](ModelPhase phase, qint64 received) {
            if (phase == ModelPhase::Fetching)
                return line.follow(received);
            line.clear();
            say(u"Checking it."_s);
        });
        line.clear();
        say(u"The on-device model is ready."_s);
    }

    ModelOffer chosenOffer() {
        const auto offers = readModelList(toText(m_surroundings.programs.modelList));
        if (m_wishes.model.isEmpty())
            return offers.at(firstOffer(offers, m_folder, m_surroundings.machineMemory));
        if (const auto index = findOffer(offers, m_wishes.model))
            return offers.at(*index);
        QStringList names{u"small"_s, u"large"_s};
        for (const ModelOffer& offer : offers)
            names.append(offer.name);
        m_status = statusWrongCall;
        throw SetupError(
            u"There is no model “%1”. There are: %2."_s.arg(m_wishes.model, names.join(u", "_s)));
    }

    platform::Task<void> getEngine() {
        if (m_paths.program())
            co_return;
        const EngineInstaller installer(m_surroundings.programs.engineInstaller,
                                        m_surroundings.directories.ownPrograms());
        say(u"Installing the engine that runs the model: "_s + installer.offer());
        co_await installer.install();
        say(u"The engine is ready."_s);
    }

    SetupSurroundings m_surroundings;
    Wishes m_wishes;
    platform::LlamaServerPaths m_paths;
    ModelFolder m_folder;
    ModelDownload m_download;
    int m_status = 1; ///< what an error ends the program with
    std::unique_ptr<platform::TaskScope> m_scope;
};

} // namespace

int runTerminalSetup(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    auto wishes = readArguments(QCoreApplication::arguments());
    if (!wishes) {
        say(u"Usage: tellwick-setup --terminal [--model small|large|NAME | --file PATH]"_s);
        return statusWrongCall;
    }
    platform::MainExecutor executor;
    return TerminalSetup(executor, std::move(*wishes)).run();
}

} // namespace setup
