// Whatever a phone calls itself is shown as plain text.
#include "PlainTextProperty.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    varda::fuzz::requirePlainText(varda::fuzz::text(data, size));
    return 0;
}
