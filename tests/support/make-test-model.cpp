// SPDX-License-Identifier: MIT
// make-test-model FILE [sentence|endless|split|heavy]: writes a tiny model that says a fixed text.
#include "tests/support/ModelMaker.h"

#include <QFile>
#include <QTextStream>

using namespace Qt::StringLiterals;

int main(int argc, char** argv) {
    const QString kind = argc > 2 ? QString::fromLocal8Bit(argv[2]) : u"sentence"_s;
    QTextStream errors(stderr);
    if (argc < 2 || argc > 3 ||
        (kind != u"sentence" && kind != u"endless" && kind != u"split" && kind != u"heavy")) {
        errors << "usage: make-test-model FILE [sentence|endless|split|heavy]\n";
        return 2;
    }
    const tests::TinyModel model = kind == u"endless" ? tests::TinyModel::endless()
                                   : kind == u"heavy" ? tests::TinyModel::heavy()
                                   : kind == u"split" ? tests::TinyModel::splitCharacters()
                                                      : tests::TinyModel::sentence();
    QFile file(QString::fromLocal8Bit(argv[1]));
    const QByteArray bytes = tests::modelFile(model);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
        errors << file.errorString() << '\n';
        return 1;
    }
    return 0;
}
