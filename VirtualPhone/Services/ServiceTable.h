// ServiceTable: which service answers a stream that a host opens, by the service's name, after the faults have had
// their say.
#pragma once

namespace varda::phone {

class Phone;
class Stream;

/// Starts the service that `stream` asks for. False where the phone has none of that name: the stream is refused.
bool openService(Phone &phone, Stream &stream);

} // namespace varda::phone
