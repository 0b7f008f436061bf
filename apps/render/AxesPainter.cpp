#include "apps/render/AxesPainter.h"

#include "apps/render/Shaders.h"

#include <QVector2D>
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
constexpr float Scale = 0.72F;         ///< an axis in the corner's half

struct Corner
{
    QVector3D position;
    QVector3D normal;
    QVector3D tint;
};

QVector3D TintOf(int axis)
{
    constexpr float Tints[3][3] = {{0.85F, 0.22F, 0.20F}, {0.25F, 0.62F, 0.22F}, {0.24F, 0.44F, 0.92F}};
    return {Tints[axis][0], Tints[axis][1], Tints[axis][2]};
}

/// Appends a shaft and a head, both round, along one axis.
void AppendArrow(std::vector<Corner>& corners, int axis)
{
    const QVector3D tint = TintOf(axis);
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

constexpr float LetterPlace = 1.16F; ///< of its middle, along the axis
constexpr float LetterSize = 0.13F;  ///< half of its height
constexpr float StrokeWidth = 0.032F;

/// The strokes of X, Y and Z, from -1 to 1, y up; pairs of ends.
const std::vector<QVector2D>& StrokesOf(int axis)
{
    static const std::vector<QVector2D> strokes[] = {
        {{-0.7F, -1}, {0.7F, 1}, {-0.7F, 1}, {0.7F, -1}},
        {{0, -1}, {0, 0}, {0, 0}, {-0.7F, 1}, {0, 0}, {0.7F, 1}},
        {{-0.7F, 1}, {0.7F, 1}, {0.7F, 1}, {-0.7F, -1}, {-0.7F, -1}, {0.7F, -1}},
    };
    return strokes[axis];
}

/// Appends the letter of an axis, which faces the eye however the axes are turned.
void AppendLetter(std::vector<Corner>& corners, int axis, const QMatrix4x4& turn)
{
    const QMatrix4x4 back = turn.transposed(); // a rotation
    const QVector3D right = back.mapVector({1, 0, 0});
    const QVector3D up = back.mapVector({0, 1, 0});
    const QVector3D toEye = back.mapVector({0, 0, 1});
    QVector3D middle;
    middle[axis] = LetterPlace;
    const std::vector<QVector2D>& strokes = StrokesOf(axis);
    for (std::size_t i = 0; i < strokes.size(); i += 2) {
        const QVector2D along = (strokes[i + 1] - strokes[i]).normalized();
        const QVector2D side = StrokeWidth * QVector2D(-along.y(), along.x());
        const QVector2D over = StrokeWidth * along;
        const QVector2D a = LetterSize * strokes[i] - over;
        const QVector2D b = LetterSize * strokes[i + 1] + over;
        for (const QVector2D& p : {a - side, b - side, b + side, a - side, b + side, a + side}) {
            corners.push_back({middle + p.x() * right + p.y() * up, toEye, TintOf(axis)});
        }
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
    m_gl.glGenVertexArrays(1, &m_state);
    m_gl.glGenBuffers(1, &m_buffer);
    m_gl.glBindVertexArray(m_state);
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
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
    std::vector<Corner> corners;
    for (int axis = 0; axis < 3; ++axis) {
        AppendArrow(corners, axis);
        AppendLetter(corners, axis, turn);
    }
    m_gl.glBindVertexArray(m_state);
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    m_gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(corners.size() * sizeof(Corner)),
                      corners.data(), GL_STREAM_DRAW);
    m_gl.glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(corners.size()));
    m_gl.glBindVertexArray(0);
    m_gl.glViewport(0, 0, size.width(), size.height());
}
