// ReverseService: "reverse:…", by which a host leads addresses on the phone back to itself.
//
//   reverse:forward:localabstract:scrcpy_1a2b3c4d;tcp:27183      (also forward:norebind:…)
//   reverse:killforward:localabstract:scrcpy_1a2b3c4d, reverse:killforward-all, reverse:list-forward
#pragma once

namespace varda::phone {

class Phone;
class ServiceRecord;
class Stream;

void answerReverse(Phone &phone, Stream &stream, ServiceRecord &record);

} // namespace varda::phone
