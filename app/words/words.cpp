// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/words/words.h"

#include "platform/foundation/message.h"

#include <QCoreApplication>
#include <QHash>

#include <span>

namespace clipheave::app {

namespace {

/// The words of one code, with "%1" to "%9" for its arguments. A layer's rows stand in the order of
/// its messages.h.
struct Sentence {
    const char* id = nullptr;
    const char* words = nullptr;
};

// platform/foundation
const Sentence kFoundationWords[] = {
    {"not-found", QT_TRANSLATE_NOOP("Words", "The file was not found")},
    {"access-denied", QT_TRANSLATE_NOOP("Words", "Access is denied")},
    {"not-supported", QT_TRANSLATE_NOOP("Words", "This is not supported")},
    {"damaged-file", QT_TRANSLATE_NOOP("Words", "The file is damaged")},
    {"file-ends-early", QT_TRANSLATE_NOOP("Words", "The file ends too early")},
    {"limit-exceeded", QT_TRANSLATE_NOOP("Words", "A limit is exceeded")},
    {"name-taken", QT_TRANSLATE_NOOP("Words", "The name is taken")},
    {"disk-full", QT_TRANSLATE_NOOP("Words", "The disk is full")},
    {"cancelled", QT_TRANSLATE_NOOP("Words", "Cancelled")},
};

// platform/media
const Sentence kMediaWords[] = {
    {"load-media-engine", QT_TRANSLATE_NOOP("Words", "Load the media engine")},
    {"no-module-folder", QT_TRANSLATE_NOOP("Words", "The folder of the media engine is unknown")},
    {"no-such-module", QT_TRANSLATE_NOOP("Words", "%1 is missing")},
    {"unknown-loader-failure", QT_TRANSLATE_NOOP("Words", "The media engine cannot be loaded")},
    {"other-engine-abi",
     QT_TRANSLATE_NOOP("Words", "The media engine is of another version (%1, not %2)")},
};

// platform/image
const Sentence kImageWords[] = {
    {},
};

// platform/isobmff
const Sentence kIsobmffWords[] = {
    {},
};

// platform/formats
const Sentence kFormatsWords[] = {
    {},
};

// platform/engine
const Sentence kEngineWords[] = {
    {},
};

// platform/audio, platform/index, platform/workspace, platform/player
const Sentence kServiceWords[] = {
    {},
};

// media
const Sentence kItemWords[] = {
    {},
};

// jobs
const Sentence kJobWords[] = {
    {},
};

// metadata
const Sentence kMetadataWords[] = {
    {},
};

// video
const Sentence kVideoWords[] = {
    {},
};

// batch
const Sentence kBatchWords[] = {
    {},
};

/// By code.
const QHash<QByteArrayView, const char*>& sentences() {
    static const QHash<QByteArrayView, const char*> words = [] {
        QHash<QByteArrayView, const char*> all;
        const std::span<const Sentence> sections[] = {
            kFoundationWords, kMediaWords, kImageWords, kIsobmffWords,  kFormatsWords, kEngineWords,
            kServiceWords,    kItemWords,  kJobWords,   kMetadataWords, kVideoWords,   kBatchWords};
        for (const auto& section : sections)
            for (const Sentence& sentence : section)
                if (sentence.id)
                    all.insert(sentence.id, sentence.words);
        return all;
    }();
    return words;
}

QString wordsOf(const platform::Message& message) {
    const char* words = sentences().value(message.code().id, message.code().id);
    return platform::fillGaps(QCoreApplication::translate("Words", words), message.arguments());
}

} // namespace

void installWords() {
    platform::setWording(&wordsOf);
}

} // namespace clipheave::app
