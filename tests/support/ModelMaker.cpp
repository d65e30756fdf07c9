// SPDX-License-Identifier: MIT
#include "tests/support/ModelMaker.h"

#include "tests/support/GgufWriter.h"

#include <QString>

#include <algorithm>
#include <stdexcept>

namespace tests {

namespace {

constexpr qsizetype headSize = 64;

// The template ends in "assistant" and a line feed, so the line feed begins the reply.
constexpr auto chatTemplate =
    "{% for message in messages %}<|im_start|>{{ message.role }}\n{{ message.content }}<|im_end|>\n"
    "{% endfor %}{% if add_generation_prompt %}<|im_start|>assistant\n{% endif %}";

/// The vocabulary writes bytes as printable characters: itself where a byte is printable in Latin-1
/// (the blank and the soft hyphen do not count), the next free one from U+0100 on elsewhere.
QString printable(quint8 byte) {
    const auto isPrintable = [](int value) {
        return (value >= 0x21 && value <= 0x7e) || (value >= 0xa1 && value <= 0xac) ||
               (value >= 0xae && value <= 0xff);
    };
    if (isPrintable(byte))
        return QChar(char16_t{byte});
    int position = 0;
    for (int value = 0; value < byte; ++value)
        position += isPrintable(value) ? 0 : 1;
    return QChar(static_cast<char16_t>(0x100 + position));
}

QByteArray vocabularyEntry(const QByteArray& token) {
    QString entry;
    for (const char byte : token)
        entry += printable(static_cast<quint8>(byte));
    return entry.toUtf8();
}

class Vocabulary {
public:
    Vocabulary() {
        for (int byte = 0; byte < 256; ++byte)
            m_entries.append(printable(static_cast<quint8>(byte)).toUtf8());
        m_entries.append({"<|endoftext|>", "<|im_start|>", "<|im_end|>"});
        m_entries.append("th"); // what the one merge rule makes; a list of none is refused
    }

    qsizetype padding() const { return 256; }
    qsizetype end() const { return 258; }
    qsizetype size() const { return m_entries.size(); }
    const QByteArrayList& entries() const { return m_entries; }

    /// The number of the token; it is added when it is not there.
    qsizetype number(const QByteArray& token) {
        const QByteArray entry = vocabularyEntry(token);
        if (const qsizetype known = m_entries.indexOf(entry); known >= 0)
            return known;
        m_entries.append(entry);
        return m_entries.size() - 1;
    }

    std::vector<qint32> types() const {
        constexpr qint32 normal = 1;
        constexpr qint32 control = 3;
        std::vector<qint32> types(static_cast<std::size_t>(size()), normal);
        std::fill(types.begin() + padding(), types.begin() + end() + 1, control);
        return types;
    }

private:
    QByteArrayList m_entries;
};

struct Shape {
    qsizetype width;
    qsizetype feedForwardWidth;
    qsizetype vocabularySize;
    int blocks;
};

/// Blocks whose weights are all zero: they add nothing to what comes in.
void addBlock(GgufWriter& writer, const Shape& shape, int number) {
    const QByteArray prefix = "blk." + QByteArray::number(number) + '.';
    const qsizetype width = shape.width;
    const qsizetype feedForward = shape.feedForwardWidth;
    const std::vector<float> ones(static_cast<std::size_t>(width), 1.0F);
    const auto zeros = [](qsizetype count) {
        return std::vector<float>(static_cast<std::size_t>(count));
    };
    writer.addTensor(prefix + "attn_norm.weight", width, ones);
    for (const auto* name : {"attn_q", "attn_k", "attn_v", "attn_output"})
        writer.addTensor(prefix + name + ".weight", width, zeros(width * width));
    writer.addTensor(prefix + "ffn_norm.weight", width, ones);
    for (const auto* name : {"ffn_gate", "ffn_up"})
        writer.addTensor(prefix + name + ".weight", width, zeros(width * feedForward));
    writer.addTensor(prefix + "ffn_down.weight", feedForward, zeros(width * feedForward));
}

void addTensors(GgufWriter& writer, const Shape& shape, const std::vector<qsizetype>& successors) {
    const qsizetype width = shape.width;
    const qsizetype vocabularySize = shape.vocabularySize;
    const auto zeros = [](qsizetype count) {
        return std::vector<float>(static_cast<std::size_t>(count));
    };
    const std::vector<float> ones(static_cast<std::size_t>(width), 1.0F);

    // Token i is the i-th unit vector, so column i of the output tells what follows it.
    std::vector<float> embedding = zeros(width * vocabularySize);
    std::vector<float> output = zeros(width * vocabularySize);
    for (qsizetype token = 0; token < vocabularySize; ++token) {
        const qsizetype next = successors[static_cast<std::size_t>(token)];
        embedding[static_cast<std::size_t>(token * width + token)] = 1.0F;
        output[static_cast<std::size_t>(next * width + token)] = 5.0F;
    }
    writer.addTensor("token_embd.weight", width, std::move(embedding));
    writer.addTensor("output_norm.weight", width, ones);
    writer.addTensor("output.weight", width, std::move(output));
    for (int block = 0; block < shape.blocks; ++block)
        addBlock(writer, shape, block);
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

TinyModel TinyModel::splitCharacters() {
    return {.tokens = {"\xc3", "\xa9", "\xf0", "\x9f", "\xa6", "\x8a"}};
}

QByteArray replyOf(const TinyModel& model) {
    return model.tokens.join();
}

QByteArray modelFile(const TinyModel& model) {
    Vocabulary vocabulary;
    std::vector<qsizetype> chain{vocabulary.number("\n")};
    for (const QByteArray& token : model.tokens) {
        const qsizetype number = vocabulary.number(token);
        if (std::find(chain.begin(), chain.end(), number) != chain.end())
            throw std::invalid_argument("a token stands twice in the reply");
        chain.push_back(number);
    }
    const qsizetype enough = std::max(model.width, vocabulary.size());
    const qsizetype width = (enough + headSize - 1) / headSize * headSize;
    const Shape shape{.width = width,
                      .feedForwardWidth = model.blocks > 1 ? width * 11 / 4 : 32,
                      .vocabularySize = vocabulary.size(),
                      .blocks = model.blocks};

    std::vector<qsizetype> successors(static_cast<std::size_t>(vocabulary.size()),
                                      vocabulary.end());
    for (std::size_t i = 0; i + 1 < chain.size(); ++i)
        successors[static_cast<std::size_t>(chain[i])] = chain[i + 1];
    if (model.isEndless && chain.size() > 1)
        successors[static_cast<std::size_t>(chain.back())] = chain[1];

    GgufWriter writer;
    const auto heads = static_cast<quint32>(width / headSize);
    writer.add("general.architecture", QByteArray("llama"));
    writer.add("general.name", QByteArray("chain of tokens"));
    writer.add("llama.vocab_size", static_cast<quint32>(vocabulary.size()));
    writer.add("llama.context_length", model.contextLength);
    writer.add("llama.embedding_length", static_cast<quint32>(width));
    writer.add("llama.block_count", static_cast<quint32>(shape.blocks));
    writer.add("llama.feed_forward_length", static_cast<quint32>(shape.feedForwardWidth));
    writer.add("llama.attention.head_count", heads);
    writer.add("llama.attention.head_count_kv", heads);
    writer.add("llama.attention.layer_norm_rms_epsilon", 1e-6F);
    writer.add("llama.rope.dimension_count", static_cast<quint32>(headSize));
    writer.add("tokenizer.ggml.model", QByteArray("gpt2"));
    // Takes a word that the vocabulary knows whole, so that a reply read back gives its own tokens.
    writer.add("tokenizer.ggml.pre", QByteArray("llama-bpe"));
    writer.add("tokenizer.ggml.tokens", vocabulary.entries());
    writer.add("tokenizer.ggml.token_type", vocabulary.types());
    writer.add("tokenizer.ggml.merges", QByteArrayList{"t h"});
    writer.add("tokenizer.ggml.bos_token_id", static_cast<quint32>(vocabulary.padding()));
    writer.add("tokenizer.ggml.eos_token_id", static_cast<quint32>(vocabulary.end()));
    writer.add("tokenizer.ggml.padding_token_id", static_cast<quint32>(vocabulary.padding()));
    writer.add("tokenizer.ggml.add_bos_token", false);
    writer.add("tokenizer.chat_template", QByteArray(chatTemplate));
    addTensors(writer, shape, successors);
    return writer.file();
}

} // namespace tests
