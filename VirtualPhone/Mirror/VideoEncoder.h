// VideoEncoder: pictures in, H.264 in Annex B form out (each NAL unit after a start code), through the OpenH264
// library.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

#include <memory>

namespace varda::phone {

struct EncodedPicture
{
    QByteArray data; ///< empty when the encoder failed
    bool isKey = false;
};

class VideoEncoder
{
public:
    /// For pictures of that size (both lengths even), so many per second.
    VideoEncoder(QSize size, int frameRate);
    ~VideoEncoder();
    Q_DISABLE_COPY_MOVE(VideoEncoder)

    /// Whether this program was built with an encoder and it accepts such pictures.
    bool isValid() const;

    /// The parameter sets (SPS and PPS), which are not repeated in the pictures.
    QByteArray parameterSets();

    /// `image` must have the encoder's size. The first picture is a key picture, and one every two seconds.
    EncodedPicture encode(const QImage &image, qint64 microseconds);

    /// Makes the next picture a key picture.
    void requestKey();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace varda::phone
