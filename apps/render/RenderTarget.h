#pragma once

#include <QOpenGLFunctions_3_3_Core>
#include <QSize>

/// A framebuffer with one colour buffer and, if asked for, depth; its size follows what is asked for. Every
/// call needs the OpenGL context that it was made in to be current.
class RenderTarget
{
public:
    using Gl = QOpenGLFunctions_3_3_Core;

    /// `format` is that of the colour buffer (GL_RGBA8, GL_R32UI ...).
    RenderTarget(Gl& gl, GLenum format, bool depth) : m_gl(gl), m_format(format), m_depth(depth) {}
    ~RenderTarget() { Release(); }
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    /// Makes the framebuffer of that size (in pixels) and number of samples, or fewer where the card has not
    /// so many, unless it is so already, and binds it with the whole as viewport. False when it cannot be
    /// made.
    bool Bind(const QSize& size, int samples);
    void Release();

    GLuint Name() const { return m_name; }
    const QSize& Size() const { return m_size; }
    /// Copies the colours into another framebuffer of that size; between different sizes, scaled smoothly,
    /// this one must have one sample.
    void CopyTo(GLuint framebuffer, const QSize& size) const;

private:
    Gl& m_gl;
    GLenum m_format;
    bool m_depth;
    GLuint m_name = 0;
    GLuint m_buffers[2] = {0, 0};
    QSize m_size;
    int m_samples = 0;
};
