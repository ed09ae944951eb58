// The encoder of a build without the OpenH264 library: there is none, and the mirror says so.
#include "Mirror/VideoEncoder.h"

namespace varda::phone {

struct VideoEncoder::Private
{
};

VideoEncoder::VideoEncoder(QSize, int) {}
VideoEncoder::~VideoEncoder() = default;
bool VideoEncoder::isValid() const
{
    return false;
}
QByteArray VideoEncoder::parameterSets()
{
    return {};
}
EncodedPicture VideoEncoder::encode(const QImage &, qint64)
{
    return {};
}
void VideoEncoder::requestKey() {}

} // namespace varda::phone
