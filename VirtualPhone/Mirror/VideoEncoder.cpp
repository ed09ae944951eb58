// VideoEncoder: OpenH264's calls and types, kept inside this file.
#include "Mirror/VideoEncoder.h"

#include "Mirror/YuvPicture.h"

#include <cstring>
#include <wels/codec_api.h>

namespace varda::phone {

namespace {

constexpr int keySeconds = 2;
constexpr int quantizer = 24; // of 51, less is better: sharp text, and small packets for flat areas

QByteArray layerBytes(const SLayerBSInfo &layer)
{
    int size = 0;
    for (int unit = 0; unit < layer.iNalCount; ++unit)
        size += layer.pNalLengthInByte[unit];
    return {reinterpret_cast<const char *>(layer.pBsBuf), size};
}

} // namespace

struct VideoEncoder::Private
{
    ISVCEncoder *encoder = nullptr;
    QSize size;
    bool isReady = false;

    bool initialize(int frameRate);
};

bool VideoEncoder::Private::initialize(int frameRate)
{
    if (WelsCreateSVCEncoder(&encoder) != 0)
        return false;
    int level = WELS_LOG_QUIET;
    encoder->SetOption(ENCODER_OPTION_TRACE_LEVEL, &level);
    SEncParamExt parameters;
    encoder->GetDefaultParams(&parameters);
    parameters.iUsageType = CAMERA_VIDEO_REAL_TIME;
    parameters.iPicWidth = size.width();
    parameters.iPicHeight = size.height();
    parameters.fMaxFrameRate = static_cast<float>(frameRate);
    parameters.iRCMode = RC_OFF_MODE;
    parameters.bEnableFrameSkip = false;
    parameters.uiIntraPeriod = static_cast<unsigned>(frameRate * keySeconds);
    parameters.eSpsPpsIdStrategy = CONSTANT_ID;
    parameters.iMultipleThreadIdc = 1;
    SSpatialLayerConfig &layer = parameters.sSpatialLayers[0];
    layer.iVideoWidth = size.width();
    layer.iVideoHeight = size.height();
    layer.fFrameRate = parameters.fMaxFrameRate;
    layer.iDLayerQp = quantizer;
    layer.sSliceArgument.uiSliceMode = SM_SINGLE_SLICE;
    return encoder->InitializeExt(&parameters) == 0;
}

VideoEncoder::VideoEncoder(QSize size, int frameRate)
    : m_private(std::make_unique<Private>())
{
    m_private->size = size;
    m_private->isReady = m_private->initialize(frameRate);
}

VideoEncoder::~VideoEncoder()
{
    if (m_private->encoder == nullptr)
        return;
    m_private->encoder->Uninitialize();
    WelsDestroySVCEncoder(m_private->encoder);
}

bool VideoEncoder::isValid() const
{
    return m_private->isReady;
}

QByteArray VideoEncoder::parameterSets()
{
    SFrameBSInfo info;
    std::memset(&info, 0, sizeof(info));
    if (!isValid() || m_private->encoder->EncodeParameterSets(&info) != 0)
        return {};
    return layerBytes(info.sLayerInfo[0]);
}

EncodedPicture VideoEncoder::encode(const QImage &image, qint64 microseconds)
{
    if (!isValid() || image.size() != m_private->size)
        return {};
    YuvPicture planes(image);
    SSourcePicture picture;
    std::memset(&picture, 0, sizeof(picture));
    picture.iColorFormat = videoFormatI420;
    picture.iPicWidth = image.width();
    picture.iPicHeight = image.height();
    picture.uiTimeStamp = microseconds / 1000;
    picture.iStride[0] = image.width();
    picture.iStride[1] = picture.iStride[2] = image.width() / 2;
    picture.pData[0] = reinterpret_cast<unsigned char *>(planes.luma.data());
    picture.pData[1] = reinterpret_cast<unsigned char *>(planes.blue.data());
    picture.pData[2] = reinterpret_cast<unsigned char *>(planes.red.data());

    SFrameBSInfo info;
    std::memset(&info, 0, sizeof(info));
    if (m_private->encoder->EncodeFrame(&picture, &info) != 0)
        return {};
    EncodedPicture result;
    result.isKey = info.eFrameType == videoFrameTypeIDR;
    for (int index = 0; index < info.iLayerNum; ++index) {
        if (info.sLayerInfo[index].uiLayerType == VIDEO_CODING_LAYER)
            result.data += layerBytes(info.sLayerInfo[index]);
    }
    return result;
}

void VideoEncoder::requestKey()
{
    if (isValid())
        m_private->encoder->ForceIntraFrame(true);
}

} // namespace varda::phone
