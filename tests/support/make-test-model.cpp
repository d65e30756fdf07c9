// SPDX-License-Identifier: MIT
// make-test-model FILE [sentence|endless|split|heavy|large]: writes a tiny model that says a fixed
// text.
#include "tests/support/ModelMaker.h"

#include <QFile>

#include <cstdio>
#include <map>

int main(int argc, char** argv) {
    using tests::TinyModel;
    const std::map<std::string, TinyModel (*)()> kinds{{"sentence", &TinyModel::sentence},
                                                       {"endless", &TinyModel::endless},
                                                       {"split", &TinyModel::splitCharacters},
                                                       {"heavy", &TinyModel::heavy},
                                                       {"large", &TinyModel::large}};
    const auto kind = kinds.find(argc > 2 ? argv[2] : "sentence");
    if (argc < 2 || argc > 3 || kind == kinds.end()) {
        std::fputs("usage: make-test-model FILE [sentence|endless|split|heavy|large]\n", stderr);
        return 2;
    }
    QFile file(QString::fromLocal8Bit(argv[1]));
    const QByteArray bytes = tests::modelFile(kind->second());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
        std::fprintf(stderr, "%s\n", qPrintable(file.errorString()));
        return 1;
    }
    return 0;
}
