#include "apps/render/RenderTarget.h"

#include <algorithm>

bool RenderTarget::Bind(const QSize& size, int samples)
{
    if (m_name == 0 || size != m_size || samples != m_samples) {
        Release();
        GLint most = 0;
        m_gl.glGetIntegerv(GL_MAX_SAMPLES, &most);
        const GLsizei count = samples > 1 ? std::min(samples, static_cast<int>(most)) : 0;
        m_gl.glGenFramebuffers(1, &m_name);
        m_gl.glGenRenderbuffers(2, m_buffers);
        m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_name);
        const auto attach = [&](GLuint buffer, GLenum format, GLenum point) {
            m_gl.glBindRenderbuffer(GL_RENDERBUFFER, buffer);
            m_gl.glRenderbufferStorageMultisample(GL_RENDERBUFFER, count, format, size.width(),
                                                  size.height());
            m_gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, point, GL_RENDERBUFFER, buffer);
        };
        attach(m_buffers[0], m_format, GL_COLOR_ATTACHMENT0);
        if (m_depth) {
            attach(m_buffers[1], GL_DEPTH_COMPONENT24, GL_DEPTH_ATTACHMENT);
        }
        m_size = size;
        m_samples = samples;
        if (m_gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
            Release();
            return false;
        }
    }
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_name);
    m_gl.glViewport(0, 0, size.width(), size.height());
    return true;
}

void RenderTarget::CopyTo(GLuint framebuffer, const QSize& size) const
{
    m_gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, m_name);
    m_gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    m_gl.glBlitFramebuffer(0, 0, m_size.width(), m_size.height(), 0, 0, size.width(), size.height(),
                           GL_COLOR_BUFFER_BIT, size == m_size ? GL_NEAREST : GL_LINEAR);
}

void RenderTarget::Release()
{
    if (m_name != 0) {
        m_gl.glDeleteFramebuffers(1, &m_name);
        m_gl.glDeleteRenderbuffers(2, m_buffers);
    }
    m_name = m_buffers[0] = m_buffers[1] = 0;
    m_size = QSize();
}
