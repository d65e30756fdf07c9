// SPDX-License-Identifier: MIT
#include "tests/Platform/Store/FaultyFiles.h"

#include <sqlite3.h>

#include <new>

namespace {

FaultyFiles* current = nullptr;
sqlite3_vfs* realSystem = nullptr;
sqlite3_vfs faultySystem{};

/// SQLite gives the memory: this object, and the real file behind it.
struct FaultyFile {
    sqlite3_file base;
    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* real(sqlite3_file* file) {
    return reinterpret_cast<FaultyFile*>(file)->real();
}

template <auto method, class... Arguments>
int forward(sqlite3_file* file, Arguments... arguments) {
    return (real(file)->pMethods->*method)(real(file), arguments...);
}

template <auto method, class... Arguments>
int forwardUnlessFaulty(sqlite3_file* file, Arguments... arguments) {
    const int fault = current->ask();
    return fault ? fault : forward<method>(file, arguments...);
}

constexpr sqlite3_io_methods methods = [] {
    using Methods = sqlite3_io_methods;
    Methods methods{};
    methods.iVersion = 1;
    methods.xClose = forward<&Methods::xClose>;
    methods.xRead = forward<&Methods::xRead>;
    methods.xWrite = forwardUnlessFaulty<&Methods::xWrite>;
    methods.xTruncate = forwardUnlessFaulty<&Methods::xTruncate>;
    // What an ended process leaves behind does not depend on a sync.
    methods.xSync = [](sqlite3_file*, int) { return current->ask(); };
    methods.xFileSize = forward<&Methods::xFileSize>;
    methods.xLock = forward<&Methods::xLock>;
    methods.xUnlock = forward<&Methods::xUnlock>;
    methods.xCheckReservedLock = forward<&Methods::xCheckReservedLock>;
    methods.xFileControl = forward<&Methods::xFileControl>;
    methods.xSectorSize = forward<&Methods::xSectorSize>;
    methods.xDeviceCharacteristics = forward<&Methods::xDeviceCharacteristics>;
    return methods;
}();

int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    const int result = realSystem->xOpen(realSystem, name, real(file), flags, outFlags);
    file->pMethods = real(file)->pMethods ? &methods : nullptr;
    return result;
}
int deleteFile(sqlite3_vfs*, const char* name, int syncFolder) {
    const int fault = current->ask();
    return fault ? fault : realSystem->xDelete(realSystem, name, syncFolder);
}

} // namespace

FaultyFiles::FaultyFiles(std::function<int(int)> beforeChange)
    : m_beforeChange(std::move(beforeChange)) {
    current = this;
    realSystem = sqlite3_vfs_find(nullptr);
    faultySystem = *realSystem;
    faultySystem.zName = "faulty";
    faultySystem.szOsFile = int(sizeof(FaultyFile)) + realSystem->szOsFile;
    faultySystem.xOpen = open;
    faultySystem.xDelete = deleteFile;
    sqlite3_vfs_register(&faultySystem, 1);
}

FaultyFiles::~FaultyFiles() {
    sqlite3_vfs_unregister(&faultySystem);
    sqlite3_vfs_register(realSystem, 1);
    current = nullptr;
}
