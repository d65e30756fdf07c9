// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Store/ModelContext.h"

/// A record type of the tests.
class Note final : public platform::PersistentModel {
public:
    static QString recordName() { return QStringLiteral("Note"); }

    platform::DateAttribute writtenAt{*this, QStringLiteral("writtenAt"), platform::Instant{}};
    platform::TextListAttribute lines{*this, QStringLiteral("lines")};
};

inline platform::ModelContainer noteContainer(const QString& file, int version = 1) {
    return platform::ModelContainer(file, {platform::RecordType::of<Note>()}, version);
}

inline std::shared_ptr<Note> makeNote(int second, const QStringList& lines = {}) {
    auto note = std::make_shared<Note>();
    note->writtenAt = platform::Instant(std::chrono::seconds(second));
    note->lines = lines;
    return note;
}

inline platform::FetchDescriptor<Note> newestFirst() {
    return {{platform::SortDescriptor(&Note::writtenAt, platform::SortOrder::Reverse)}};
}

/// The lines of several notes.
using Lines = QList<QStringList>;

/// What a context made afresh finds in the store.
inline Lines linesInStore(const platform::ModelContainer& container) {
    platform::ModelContext context(container);
    Lines lines;
    for (const auto& note : context.fetch<Note>(newestFirst()))
        lines.append(note->lines.value());
    return lines;
}
