// SPDX-License-Identifier: MIT
// All that the set-up says. Sizes are in decimal units, as vendors and file managers of the desktop
// count them.
#pragma once

#include "Setup/ModelOffer.h"

#include <QString>

namespace setup::texts {

using namespace Qt::StringLiterals;

// clang-format off
inline QString windowTitle()     { return u"Tellwick Set-up"_s; }
inline QString heading()         { return u"Set up Tellwick"_s; }
inline QString introduction()    { return u"Its model is fetched once and answers on this computer.\n"
                                           "After that, no network is needed."_s; }
inline QString headingReady()    { return u"Tellwick is ready"_s; }
inline QString readyToOpen()     { return u"It answers on this computer and needs no network."_s; }
inline QString model()           { return u"Model"_s; }
inline QString engine()          { return u"Engine"_s; }
inline QString engineFooter()    { return u"The engine is the program that runs the model."_s; }
inline QString useFile()         { return u"Use a File…"_s; }
inline QString chooseFile()      { return u"Choose a Model"_s; }
inline QString modelFiles()      { return u"Models (*.gguf)"_s; }
inline QString ownFile()         { return u"Your own file"_s; }
inline QString notHere()         { return u"Not on this computer yet"_s; }
inline QString connecting()      { return u"Connecting…"_s; }
inline QString checking()        { return u"Checking…"_s; }
inline QString ready()           { return u"Ready"_s; }
inline QString installing()      { return u"Installing…"_s; }
inline QString selected()        { return u"Selected"_s; }
inline QString download()        { return u"Download"_s; }
inline QString pause()           { return u"Pause"_s; }
inline QString resume()          { return u"Resume"_s; }
inline QString tryAgain()        { return u"Try Again"_s; }
inline QString install()         { return u"Install"_s; }
inline QString notNow()          { return u"Not Now"_s; }
inline QString openTellwick()    { return u"Open Tellwick"_s; }
// clang-format on

/// "2.5 GB", "12 MB".
QString size(qint64 bytes);
/// "1.2 of 2.5 GB"; never as if all were there before it is.
QString part(qint64 received, qint64 whole);
/// "11 MB/s".
QString rate(qint64 bytesPerSecond);
/// "about 2 minutes left".
QString timeLeft(qint64 seconds);
/// "1.2 of 2.5 GB · 11 MB/s · about 2 minutes left"; without what is not known.
QString progress(qint64 received, qint64 whole, qint64 bytesPerSecond);
/// "Fetching, 40 per cent": what is said of the progress; changes ten times in all.
QString spokenProgress(qint64 received, qint64 whole);
/// "Paused · 1.2 of 2.5 GB".
QString paused(qint64 received, qint64 whole);
/// "2.5 GB · Apache-2.0 · for 12 GB of memory or more".
QString details(const ModelOffer& offer);
/// Where the model comes from, and where to; `home` is written as "~".
QString origin(const ModelOffer& offer, const QString& folder, qint64 room, const QString& home);
/// Where the model is.
QString keptIn(const QString& folder, const QString& home);
/// That there is too little room on the disk for what is missing.
QString tooLittleRoom(qint64 missing, qint64 room);
/// A path as users know it: with "~" for their home.
QString shortPath(const QString& path, const QString& home);
/// The same for the paths in a sentence.
QString withShortPaths(QString sentence, const QString& home);

} // namespace setup::texts
