#include "apps/render/SelectionOutline.h"

#include "apps/render/Shaders.h"

#include <QVector3D>

QString SelectionOutline::Initialize()
{
    if (!m_program.addShaderFromSourceCode(QOpenGLShader::Vertex, Shaders::BackgroundVertex) ||
        !m_program.addShaderFromSourceCode(QOpenGLShader::Fragment, Shaders::OutlineFragment) ||
        !m_program.link()) {
        return m_program.log();
    }
    m_gl.glGenVertexArrays(1, &m_emptyState);
    return {};
}

void SelectionOutline::Release()
{
    m_gl.glDeleteFramebuffers(1, &m_mask);
    m_gl.glDeleteTextures(1, &m_texture);
    m_gl.glDeleteVertexArrays(1, &m_emptyState);
    m_mask = m_texture = m_emptyState = 0;
}

bool SelectionOutline::BindMask(const QSize& size)
{
    if (m_mask == 0) {
        m_gl.glGenFramebuffers(1, &m_mask);
        m_gl.glGenTextures(1, &m_texture);
    }
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, m_mask);
    if (size != m_size) {
        m_size = size;
        m_gl.glBindTexture(GL_TEXTURE_2D, m_texture);
        m_gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_R8, size.width(), size.height(), 0, GL_RED, GL_UNSIGNED_BYTE,
                          nullptr);
        for (const GLenum name : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER}) {
            m_gl.glTexParameteri(GL_TEXTURE_2D, name, GL_NEAREST);
        }
        m_gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_texture, 0);
    }
    m_gl.glViewport(0, 0, size.width(), size.height());
    return m_gl.glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void SelectionOutline::Draw(unsigned framebuffer, const QSize& size, const QColor& color, int width,
                            const std::function<void()>& drawMask)
{
    if (BindMask(size)) {
        m_gl.glDisable(GL_DEPTH_TEST);
        m_gl.glDisable(GL_BLEND);
        m_gl.glDisable(GL_CULL_FACE);
        const GLfloat none[] = {0.0F, 0.0F, 0.0F, 0.0F};
        m_gl.glClearBufferfv(GL_COLOR, 0, none);
        drawMask();
    }
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    m_gl.glViewport(0, 0, size.width(), size.height());
    m_gl.glDisable(GL_DEPTH_TEST);
    m_gl.glEnable(GL_BLEND);
    m_gl.glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    m_program.bind();
    m_program.setUniformValue("mask", Shaders::UnitTexture);
    m_program.setUniformValue("width", width);
    m_program.setUniformValue("color",
                              QVector3D(static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
                                        static_cast<float>(color.blueF())));
    m_gl.glActiveTexture(GL_TEXTURE0 + Shaders::UnitTexture);
    m_gl.glBindTexture(GL_TEXTURE_2D, m_texture);
    m_gl.glBindVertexArray(m_emptyState);
    m_gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    m_gl.glBindVertexArray(0);
    m_gl.glEnable(GL_DEPTH_TEST);
}
