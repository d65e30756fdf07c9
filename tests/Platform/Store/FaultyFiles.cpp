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

int close(sqlite3_file* file) {
    return real(file)->pMethods->xClose(real(file));
}
int read(sqlite3_file* file, void* data, int size, sqlite3_int64 at) {
    return real(file)->pMethods->xRead(real(file), data, size, at);
}
int write(sqlite3_file* file, const void* data, int size, sqlite3_int64 at) {
    const int fault = current->ask();
    return fault ? fault : real(file)->pMethods->xWrite(real(file), data, size, at);
}
int truncate(sqlite3_file* file, sqlite3_int64 size) {
    const int fault = current->ask();
    return fault ? fault : real(file)->pMethods->xTruncate(real(file), size);
}
int sync(sqlite3_file*, int) {
    return current->ask(); // what an ended process leaves behind does not depend on it
}
int fileSize(sqlite3_file* file, sqlite3_int64* size) {
    return real(file)->pMethods->xFileSize(real(file), size);
}
int lock(sqlite3_file* file, int level) {
    return real(file)->pMethods->xLock(real(file), level);
}
int unlock(sqlite3_file* file, int level) {
    return real(file)->pMethods->xUnlock(real(file), level);
}
int checkReservedLock(sqlite3_file* file, int* isReserved) {
    return real(file)->pMethods->xCheckReservedLock(real(file), isReserved);
}
int fileControl(sqlite3_file* file, int operation, void* argument) {
    return real(file)->pMethods->xFileControl(real(file), operation, argument);
}
int sectorSize(sqlite3_file* file) {
    return real(file)->pMethods->xSectorSize(real(file));
}
int deviceCharacteristics(sqlite3_file* file) {
    return real(file)->pMethods->xDeviceCharacteristics(real(file));
}

constexpr sqlite3_io_methods methods = [] {
    sqlite3_io_methods methods{};
    methods.iVersion = 1;
    methods.xClose = close;
    methods.xRead = read;
    methods.xWrite = write;
    methods.xTruncate = truncate;
    methods.xSync = sync;
    methods.xFileSize = fileSize;
    methods.xLock = lock;
    methods.xUnlock = unlock;
    methods.xCheckReservedLock = checkReservedLock;
    methods.xFileControl = fileControl;
    methods.xSectorSize = sectorSize;
    methods.xDeviceCharacteristics = deviceCharacteristics;
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
