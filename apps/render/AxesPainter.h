#pragma once

#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>
#include <QSize>

/// Draws the three axes, small, in the lower left corner of a picture: x red, y green, z blue, with
/// their letters. Every call
/// needs the OpenGL context that it was made in to be current.
class AxesPainter
{
public:
    using Gl = QOpenGLFunctions_3_3_Core;

    explicit AxesPainter(Gl& gl) : m_gl(gl) {}
    ~AxesPainter();
    AxesPainter(const AxesPainter&) = delete;
    AxesPainter& operator=(const AxesPainter&) = delete;

    /// Gives an empty text, or the shader compiler's message.
    QString Initialize();
    /// Draws into the bound framebuffer of that size, turned as the view is; the viewport is the whole
    /// afterwards, and depth in the corner is lost.
    void Draw(const QMatrix4x4& view, const QSize& size);

private:
    Gl& m_gl;
    QOpenGLShaderProgram m_program;
    GLuint m_state = 0;
    GLuint m_buffer = 0;
};
