#pragma once

#include <QColor>
#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>
#include <QSize>

#include <functional>

/// Draws a line around what is selected, over everything that stands before it. Every call needs the OpenGL
/// context that it was made in to be current.
class SelectionOutline
{
public:
    using Gl = QOpenGLFunctions_3_3_Core;

    explicit SelectionOutline(Gl& gl) : m_gl(gl) {}
    ~SelectionOutline() { Release(); }
    SelectionOutline(const SelectionOutline&) = delete;
    SelectionOutline& operator=(const SelectionOutline&) = delete;

    /// Gives an empty text, or the shader compiler's message.
    QString Initialize();
    /// Calls `drawMask`, which draws the selection's places in any colour but black, and then draws the line,
    /// `width` pixels wide, into a framebuffer of that size.
    void Draw(unsigned framebuffer, const QSize& size, const QColor& color, int width,
              const std::function<void()>& drawMask);

private:
    bool BindMask(const QSize& size);
    void Release();

    Gl& m_gl;
    QOpenGLShaderProgram m_program;
    GLuint m_emptyState = 0;
    GLuint m_mask = 0;
    GLuint m_texture = 0;
    QSize m_size;
};
