// Any bytes decode as the Unicode Standard says, and the result is well-formed.
#include "Fuzz.h"
#include "Reference.h"

#include "VardaCore/CommandResult.h"
#include "VardaCore/Text.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    const QByteArrayView input = bytes(data, size);
    const QString decoded = varda::decodeUtf8(input);
    require(decoded == referenceDecode(input), "the decoder follows the Unicode Standard");
    const qsizetype cut = size > 0 ? data[0] % input.size() : 0;
    varda::Utf8Decoder decoder(0);
    decoder.append(input.first(cut));
    decoder.append(input.sliced(cut));
    require(decoder.finish() == decoded, "where blocks are cut makes no difference");
    require(decoded.isValidUtf16(), "what is decoded is well-formed");
    require(varda::decodeUtf8(decoded.toUtf8()) == decoded, "decoding what was repaired changes nothing");
    const varda::CommandResult result{0, input.toByteArray(), QString()};
    require(result.text() == decoded, "a command's output is decoded in the same way");
    return 0;
}
