// SPDX-License-Identifier: MIT
#include "tests/support/ModelMaker.h"

#include <QString>

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace tests {

namespace {

static_assert(std::endian::native == std::endian::little, "the format is little-endian");

template <class Value>
void put(QByteArray& bytes, const Value& value) {
    if constexpr (std::is_same_v<Value, QByteArray>) {
        put(bytes, static_cast<quint64>(value.size()));
        bytes.append(value);
    } else {
        static_assert(std::is_arithmetic_v<Value>);
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
}

/// The format's number of a type.
template <class Value>
constexpr quint32 typeNumber = 8; // text
template <>
constexpr quint32 typeNumber<quint32> = 4;
template <>
constexpr quint32 typeNumber<qint32> = 5;
template <>
constexpr quint32 typeNumber<float> = 6;
template <>
constexpr quint32 typeNumber<bool> = 7;
constexpr quint32 listType = 9;

/// Writes a model file in the GGUF format, version 3: what describes the model first, then the
/// tensors.
class GgufWriter {
public:
    template <class Value>
    void add(const QByteArray& key, const Value& value) {
        beginEntry(key, typeNumber<Value>);
        put(m_entries, value);
    }
    template <class Value>
    void add(const QByteArray& key, const QList<Value>& values) {
        beginEntry(key, listType);
        put(m_entries, typeNumber<Value>);
        put(m_entries, static_cast<quint64>(values.size()));
        for (const Value& value : values)
            put(m_entries, value);
    }

    /// A tensor of the given numbers, row by row: `width` numbers to a row.
    void addTensor(const QByteArray& name, qsizetype width, const QList<float>& values) {
        describeTensor(name, width, values.size() / width, floats);
        m_numbers.append(reinterpret_cast<const char*>(values.constData()),
                         values.size() * qsizetype{sizeof(float)});
        align(m_numbers);
    }

    /// A tensor of zeros; quantised, it holds 32 numbers of four bits and their scale in 18 bytes.
    void addZeros(const QByteArray& name, qsizetype width, qsizetype rows, bool isQuantised) {
        describeTensor(name, width, rows, isQuantised ? fourBits : floats);
        const qsizetype count = width * rows;
        m_numbers.append(isQuantised ? count / 32 * 18 : count * qsizetype{sizeof(float)}, '\0');
        align(m_numbers);
    }

    QByteArray file() const {
        QByteArray file("GGUF");
        put(file, quint32{3});
        put(file, m_tensorCount);
        put(file, m_entryCount);
        file += m_entries + m_tensors;
        align(file);
        return file + m_numbers;
    }

private:
    static constexpr quint32 floats = 0;
    static constexpr quint32 fourBits = 2;

    void describeTensor(const QByteArray& name, qsizetype width, qsizetype rows, quint32 type) {
        ++m_tensorCount;
        put(m_tensors, name);
        put(m_tensors, quint32{rows == 1 ? 1U : 2U});
        put(m_tensors, static_cast<quint64>(width));
        if (rows > 1)
            put(m_tensors, static_cast<quint64>(rows));
        put(m_tensors, type);
        put(m_tensors, static_cast<quint64>(m_numbers.size()));
    }
    void beginEntry(const QByteArray& key, quint32 type) {
        ++m_entryCount;
        put(m_entries, key);
        put(m_entries, type);
    }
    static void align(QByteArray& bytes) {
        constexpr qsizetype alignment = 32;
        bytes.append((alignment - bytes.size() % alignment) % alignment, '\0');
    }

    quint64 m_entryCount = 0;
    QByteArray m_entries;
    quint64 m_tensorCount = 0;
    QByteArray m_tensors;
    QByteArray m_numbers;
};

constexpr qsizetype headSize = 64;

// The template ends in "assistant" and a line feed, so the line feed begins the reply.
constexpr auto chatTemplate =
    "{% for message in messages %}<|im_start|>{{ message.role }}\n{{ message.content }}<|im_end|>\n"
    "{% endfor %}{% if add_generation_prompt %}<|im_start|>assistant\n{% endif %}";

/// The vocabulary writes bytes as printable characters: itself where a byte is printable in Latin-1
/// (the blank and the soft hyphen do not count), the next free one from U+0100 on elsewhere.
QByteArrayList printableBytes() {
    QByteArrayList characters;
    char16_t next = 0x100;
    for (char16_t byte = 0; byte < 0x100; ++byte) {
        const bool isPrintable = (byte >= 0x21 && byte <= 0x7e) || (byte >= 0xa1 && byte != 0xad);
        characters.append(QString(QChar(isPrintable ? byte : next++)).toUtf8());
    }
    return characters;
}

class Vocabulary {
public:
    static constexpr qsizetype padding = 256;
    static constexpr qsizetype end = 258;

    Vocabulary()
        : m_bytes(printableBytes())
        , m_entries(m_bytes) {
        m_entries.append({"<|endoftext|>", "<|im_start|>", "<|im_end|>"});
        m_entries.append("th"); // what the one merge rule makes; a list of none is refused
    }

    qsizetype size() const { return m_entries.size(); }
    const QList<QByteArray>& entries() const { return m_entries; }

    /// The number of the token; it is added when it is not there.
    qsizetype number(const QByteArray& token) {
        QByteArray entry;
        for (const char byte : token)
            entry += m_bytes.at(static_cast<quint8>(byte));
        if (!m_entries.contains(entry))
            m_entries.append(entry);
        return m_entries.indexOf(entry);
    }

    QList<qint32> types() const {
        constexpr qint32 normal = 1;
        constexpr qint32 control = 3;
        QList<qint32> types(size(), normal);
        std::fill(types.begin() + padding, types.begin() + end + 1, control);
        return types;
    }

private:
    QByteArrayList m_bytes;
    QByteArrayList m_entries;
};

QList<float> zeros(qsizetype count) {
    return QList<float>(count);
}

/// A block whose weights are all zero: it adds nothing to what comes in.
void addBlock(GgufWriter& writer, const QByteArray& prefix, qsizetype width,
              qsizetype feedForwardWidth, qsizetype keyWidth, bool isQuantised) {
    const QList<float> ones(width, 1.0F);
    const auto add = [&](const char* name, qsizetype in, qsizetype out) {
        writer.addZeros(prefix + name + ".weight", in, out, isQuantised);
    };
    writer.addTensor(prefix + "attn_norm.weight", width, ones);
    for (const auto* name : {"attn_q", "attn_output"})
        add(name, width, width);
    for (const auto* name : {"attn_k", "attn_v"})
        add(name, width, keyWidth);
    writer.addTensor(prefix + "ffn_norm.weight", width, ones);
    for (const auto* name : {"ffn_gate", "ffn_up"})
        add(name, width, feedForwardWidth);
    add("ffn_down", feedForwardWidth, width);
}

} // namespace

TinyModel TinyModel::sentence() {
    return {.tokens = {"The", " quick", " brown", " fox", " jumps", " over", " a", " lazy", " dog",
                       "."}};
}

TinyModel TinyModel::endless() {
    return {.tokens = {"one", " two", " three", " four", " five", " six", " seven", " eight,"},
            .isEndless = true};
}

TinyModel TinyModel::heavy() {
    TinyModel model = endless();
    model.blocks = 4;
    model.width = 1'024;
    return model;
}

TinyModel TinyModel::large() {
    TinyModel model = endless();
    model.blocks = 41;
    model.width = 2'048;
    model.isLikeReal = true;
    return model;
}

TinyModel TinyModel::splitCharacters() {
    return {.tokens = {"\xc3", "\xa9", "\xf0", "\x9f", "\xa6", "\x8a"}};
}

QByteArray replyOf(const TinyModel& model) {
    return model.tokens.join();
}

QByteArray modelFile(const TinyModel& model) {
    Vocabulary vocabulary;
    QList<qsizetype> chain{vocabulary.number("\n")};
    for (const QByteArray& token : model.tokens) {
        const qsizetype number = vocabulary.number(token);
        if (chain.contains(number))
            throw std::invalid_argument("a token stands twice in the reply");
        chain.append(number);
    }
    QList<qsizetype> successors(vocabulary.size(), Vocabulary::end);
    for (qsizetype i = 0; i + 1 < chain.size(); ++i)
        successors[chain[i]] = chain[i + 1];
    if (model.isEndless)
        successors[chain.last()] = chain.at(1);

    const qsizetype enough = std::max(model.width, vocabulary.size());
    const qsizetype width = (enough + headSize - 1) / headSize * headSize;
    const qsizetype feedForwardWidth = model.blocks > 1 ? width * 11 / 4 : 32;
    const qsizetype heads = width / headSize;
    const qsizetype keyHeads = model.isLikeReal ? heads / 8 : heads;

    GgufWriter writer;
    writer.add("general.architecture", QByteArray("llama"));
    writer.add("general.name", QByteArray("chain of tokens"));
    writer.add("llama.vocab_size", static_cast<quint32>(vocabulary.size()));
    writer.add("llama.context_length", model.contextLength);
    writer.add("llama.embedding_length", static_cast<quint32>(width));
    writer.add("llama.block_count", static_cast<quint32>(model.blocks));
    writer.add("llama.feed_forward_length", static_cast<quint32>(feedForwardWidth));
    writer.add("llama.attention.head_count", static_cast<quint32>(heads));
    writer.add("llama.attention.head_count_kv", static_cast<quint32>(keyHeads));
    writer.add("llama.attention.layer_norm_rms_epsilon", 1e-6F);
    writer.add("llama.rope.dimension_count", static_cast<quint32>(headSize));
    writer.add("tokenizer.ggml.model", QByteArray("gpt2"));
    // Takes a word that the vocabulary knows whole, so that a reply read back gives its own tokens.
    writer.add("tokenizer.ggml.pre", QByteArray("llama-bpe"));
    writer.add("tokenizer.ggml.tokens", vocabulary.entries());
    writer.add("tokenizer.ggml.token_type", vocabulary.types());
    writer.add("tokenizer.ggml.merges", QList<QByteArray>{"t h"});
    writer.add("tokenizer.ggml.bos_token_id", static_cast<quint32>(Vocabulary::padding));
    writer.add("tokenizer.ggml.eos_token_id", static_cast<quint32>(Vocabulary::end));
    writer.add("tokenizer.ggml.padding_token_id", static_cast<quint32>(Vocabulary::padding));
    writer.add("tokenizer.ggml.add_bos_token", false);
    writer.add("tokenizer.chat_template", QByteArray(chatTemplate));

    // Token i is the i-th unit vector, so column i of the output tells what follows it.
    QList<float> embedding = zeros(width * vocabulary.size());
    QList<float> output = embedding;
    for (qsizetype token = 0; token < vocabulary.size(); ++token) {
        embedding[token * width + token] = 1.0F;
        output[successors[token] * width + token] = 5.0F;
    }
    writer.addTensor("token_embd.weight", width, embedding);
    writer.addTensor("output_norm.weight", width, QList<float>(width, 1.0F));
    writer.addTensor("output.weight", width, output);
    for (int block = 0; block < model.blocks; ++block)
        addBlock(writer, "blk." + QByteArray::number(block) + '.', width, feedForwardWidth,
                 keyHeads * headSize, model.isLikeReal);
    return writer.file();
}

} // namespace tests
