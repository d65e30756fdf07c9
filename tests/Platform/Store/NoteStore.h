// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/ModelContext.h"

#include <QTemporaryDir>
#include <QTimeZone>

#include <functional>

/// A record type of the tests.
class Note final : public platform::PersistentModel {
public:
    static QString recordName() { return QStringLiteral("Note"); }

    platform::DateAttribute writtenAt{*this, QStringLiteral("writtenAt"), {}};
    platform::TextListAttribute lines{*this, QStringLiteral("lines")};
};

using Notes = QList<std::shared_ptr<Note>>;
/// The lines of several notes.
using Lines = QList<QStringList>;

/// A delay after which nothing is saved by itself within a test.
constexpr auto never = std::chrono::hours(1);

inline QDateTime atSecond(int second) {
    return QDateTime::fromSecsSinceEpoch(second, QTimeZone::utc());
}

inline std::shared_ptr<Note> makeNote(int second, const QStringList& lines = {}) {
    auto note = std::make_shared<Note>();
    note->writtenAt = atSecond(second);
    note->lines = lines;
    return note;
}

/// The notes of a context, the newest first.
inline Notes notesIn(platform::ModelContext& context) {
    return context.fetch<Note>({{&Note::writtenAt}});
}

/// Whether the operation fails for a reason that is told in these words.
inline bool fails(const std::function<void()>& operation, const QByteArray& words = {}) {
    try {
        operation();
    } catch (const platform::StoreError& error) {
        if (QByteArray(error.what()).contains(words))
            return true;
        qWarning("%s", error.what());
    }
    return false;
}

/// A store of notes, not made yet, in a folder of its own.
struct NoteStore {
    QTemporaryDir folder;
    QString file = folder.filePath(QStringLiteral("store.sqlite"));
    platform::ModelContainer container{file, platform::RecordType::of<Note>()};

    /// Puts the store somewhere below the folder.
    void move(const QString& path) {
        file = folder.filePath(path);
        container = platform::ModelContainer(file, platform::RecordType::of<Note>());
    }

    /// Saves one more note.
    void save(const QStringList& lines, int second = 1) const {
        platform::ModelContext context(container, never);
        context.insert(makeNote(second, lines));
        context.save();
    }

    /// What a context made afresh finds, the newest first.
    Lines lines() const {
        platform::ModelContext context(container, never);
        Lines lines;
        for (const auto& note : notesIn(context))
            lines.append(note->lines.value());
        return lines;
    }
};
