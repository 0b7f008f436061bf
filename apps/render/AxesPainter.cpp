#include "apps/render/AxesPainter.h"

#include "apps/render/Shaders.h"

#include <QVector3D>
#include <QtMath>

#include <algorithm>
#include <vector>

namespace {

constexpr int Sides = 12;
constexpr float ShaftRadius = 0.045F;
constexpr float HeadRadius = 0.13F;
constexpr float HeadStart = 0.68F;
constexpr float PartOfPicture = 0.15F; ///< of its shorter side
constexpr float Scale = 0.8F;          ///< an axis in the corner's half

struct Corner
{
    QVector3D position;
    QVector3D normal;
    QVector3D tint;
};

/// Appends a shaft and a head, both round, along one axis.
void AppendArrow(std::vector<Corner>& corners, int axis)
{
    constexpr float tints[3][3] = {{0.85F, 0.22F, 0.20F}, {0.25F, 0.62F, 0.22F}, {0.20F, 0.38F, 0.85F}};
    const QVector3D tint(tints[axis][0], tints[axis][1], tints[axis][2]);
    QVector3D along;
    QVector3D u;
    QVector3D v;
    along[axis] = u[(axis + 1) % 3] = v[(axis + 2) % 3] = 1.0F;
    const auto ring = [&](int side) {
        const float angle = 2.0F * static_cast<float>(M_PI) * static_cast<float>(side) / Sides;
        return std::cos(angle) * u + std::sin(angle) * v;
    };
    for (int side = 0; side < Sides; ++side) {
        const QVector3D a = ring(side);
        const QVector3D b = ring(side + 1);
        const auto add = [&](const QVector3D& position, const QVector3D& normal) {
            corners.push_back({position, normal, tint});
        };
        const QVector3D top = HeadStart * along;
        for (const auto& [p, n] :
             {std::pair(ShaftRadius * a, a), std::pair(ShaftRadius * b, b),
              std::pair(ShaftRadius * b + top, b), std::pair(ShaftRadius * a, a),
              std::pair(ShaftRadius * b + top, b), std::pair(ShaftRadius * a + top, a)}) {
            add(p, n);
        }
        add(HeadRadius * a + top, a);
        add(HeadRadius * b + top, b);
        add(along, a + b);
        add(HeadRadius * b + top, -along);
        add(HeadRadius * a + top, -along);
        add(top, -along);
    }
}

} // namespace

QString AxesPainter::Initialize()
{
    if (!m_program.addShaderFromSourceCode(QOpenGLShader::Vertex, Shaders::AxesVertex) ||
        !m_program.addShaderFromSourceCode(QOpenGLShader::Fragment, Shaders::AxesFragment) ||
        !m_program.link()) {
        return m_program.log();
    }
    std::vector<Corner> corners;
    for (int axis = 0; axis < 3; ++axis) {
        AppendArrow(corners, axis);
    }
    m_count = static_cast<GLsizei>(corners.size());
    m_gl.glGenVertexArrays(1, &m_state);
    m_gl.glGenBuffers(1, &m_buffer);
    m_gl.glBindVertexArray(m_state);
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    m_gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(corners.size() * sizeof(Corner)),
                      corners.data(), GL_STATIC_DRAW);
    for (GLuint i = 0; i < 3; ++i) {
        m_gl.glEnableVertexAttribArray(i);
        m_gl.glVertexAttribPointer(i, 3, GL_FLOAT, GL_FALSE, sizeof(Corner),
                                   reinterpret_cast<const void*>(i * sizeof(QVector3D)));
    }
    m_gl.glBindVertexArray(0);
    return {};
}

AxesPainter::~AxesPainter()
{
    m_gl.glDeleteVertexArrays(1, &m_state);
    m_gl.glDeleteBuffers(1, &m_buffer);
}

void AxesPainter::Draw(const QMatrix4x4& view, const QSize& size)
{
    const int side =
        static_cast<int>(PartOfPicture * static_cast<float>(std::min(size.width(), size.height())));
    QMatrix4x4 matrix;
    matrix.scale(Scale, Scale, -Scale); // clip space looks along +z
    QMatrix4x4 turn = view;
    turn.setColumn(3, {0.0F, 0.0F, 0.0F, 1.0F});
    m_gl.glViewport(side / 8, side / 8, side, side);
    m_gl.glEnable(GL_SCISSOR_TEST);
    m_gl.glScissor(side / 8, side / 8, side, side);
    m_gl.glClear(GL_DEPTH_BUFFER_BIT);
    m_gl.glDisable(GL_SCISSOR_TEST);
    m_gl.glEnable(GL_DEPTH_TEST);
    m_gl.glDisable(GL_BLEND);
    m_program.bind();
    m_program.setUniformValue("matrix", matrix * turn);
    m_gl.glBindVertexArray(m_state);
    m_gl.glDrawArrays(GL_TRIANGLES, 0, m_count);
    m_gl.glBindVertexArray(0);
    m_gl.glViewport(0, 0, size.width(), size.height());
}
