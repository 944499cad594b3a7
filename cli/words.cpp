// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/words.h"

#include "platform/foundation/message.h"

#include <QHash>

#include <span>

namespace clipheave::cli {

namespace {

/// The words of one code, with "%1" to "%9" for its arguments. A layer's rows stand in the order of
/// its messages.h.
struct Sentence {
    const char* id = nullptr;
    const char* words = nullptr;
};

// platform/foundation
const Sentence kFoundationWords[] = {
    {"not-found", "The file was not found"},
    {"access-denied", "Access is denied"},
    {"not-supported", "This is not supported"},
    {"damaged-file", "The file is damaged"},
    {"file-ends-early", "The file ends too early"},
    {"limit-exceeded", "A limit is exceeded"},
    {"name-taken", "The name is taken"},
    {"disk-full", "The disk is full"},
    {"cancelled", "Cancelled"},
};

// platform/media
const Sentence kMediaWords[] = {
    {"load-media-engine", "Load the media engine"},
    {"no-module-folder", "The folder of the media engine is unknown"},
    {"no-such-module", "%1 is missing"},
    {"unknown-loader-failure", "The media engine cannot be loaded"},
    {"other-engine-abi", "The media engine is of another version (%1, not %2)"},
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
    return platform::fillGaps(QString::fromUtf8(words), message.arguments());
}

} // namespace

void installWords() {
    platform::setWording(&wordsOf);
}

} // namespace clipheave::cli
