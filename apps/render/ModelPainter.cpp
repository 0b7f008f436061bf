#include "apps/render/ModelPainter.h"

#include "apps/render/Shaders.h"

#include <QVector3D>

namespace {

float Linear(float encoded)
{
    return std::pow(encoded, 2.2F);
}

QVector3D LinearOf(const QColor& color)
{
    return {Linear(static_cast<float>(color.redF())), Linear(static_cast<float>(color.greenF())),
            Linear(static_cast<float>(color.blueF()))};
}

QVector3D EncodedOf(const QColor& color)
{
    return {static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
            static_cast<float>(color.blueF())};
}

GpuScene::PartKind PartOf(DrawCommand::Pass pass)
{
    switch (pass) {
    case DrawCommand::PassLines:
        return GpuScene::PartSegments;
    case DrawCommand::PassEdges:
        return GpuScene::PartEdges;
    case DrawCommand::PassTangents:
        return GpuScene::PartTangents;
    default:
        return GpuScene::PartFaces;
    }
}

} // namespace

QString ModelPainter::Initialize()
{
    const struct
    {
        Program program;
        const char* vertex;
        const char* fragment;
    } sources[] = {
        {ProgramFaces, Shaders::ModelVertex, Shaders::FaceFragment},
        {ProgramLines, Shaders::ModelVertex, Shaders::LineFragment},
        {ProgramEdges, Shaders::ModelVertex, Shaders::EdgeFragment},
        {ProgramPick, Shaders::ModelVertex, Shaders::PickFragment},
        {ProgramMask, Shaders::ModelVertex, Shaders::MaskFragment},
        {ProgramBackground, Shaders::BackgroundVertex, Shaders::BackgroundFragment},
    };
    for (const auto& source : sources) {
        QOpenGLShaderProgram& program = m_programs[source.program];
        if (!program.addShaderFromSourceCode(QOpenGLShader::Vertex, source.vertex) ||
            !program.addShaderFromSourceCode(QOpenGLShader::Fragment, source.fragment) || !program.link()) {
            return program.log();
        }
    }
    m_gl.glGenBuffers(1, &m_ids);
    m_gl.glGenVertexArrays(1, &m_emptyState);
    return {};
}

void ModelPainter::Release()
{
    for (QOpenGLShaderProgram& program : m_programs) {
        program.removeAllShaders();
    }
    m_gl.glDeleteBuffers(1, &m_ids);
    m_gl.glDeleteVertexArrays(1, &m_emptyState);
    m_ids = m_emptyState = 0;
}

void ModelPainter::DrawBackground(const Frame& frame)
{
    m_gl.glDisable(GL_DEPTH_TEST);
    m_gl.glDisable(GL_BLEND);
    m_gl.glDisable(GL_CULL_FACE);
    m_gl.glDepthMask(GL_TRUE);
    m_gl.glClear(GL_DEPTH_BUFFER_BIT);
    QOpenGLShaderProgram& program = m_programs[ProgramBackground];
    program.bind();
    program.setUniformValue("top", EncodedOf(frame.backgroundTop));
    program.setUniformValue("bottom", EncodedOf(frame.backgroundBottom));
    m_gl.glBindVertexArray(m_emptyState);
    m_gl.glDrawArrays(GL_TRIANGLES, 0, 3);
}

void ModelPainter::Start(const DrawList& list, const Frame& frame, const Vec3& origin,
                         const QMatrix4x4& projection)
{
    m_view = frame.camera.View(origin);
    m_projection = projection;
    m_selection = frame.selection;
    m_highlight = frame.highlight;
    m_hasSection = frame.section.has_value();
    m_section = QVector4D(0, 0, 0, 1); // all is on its side, whether the card heeds planes or not
    if (m_hasSection) {
        const Vec3& n = frame.section->normal;
        m_section = QVector4D(static_cast<float>(n.x), static_cast<float>(n.y), static_cast<float>(n.z),
                              static_cast<float>(Dot(n, origin) - frame.section->offset));
    }
    m_command = 0;
    m_instance = m_index = 0;
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_ids);
    // Fresh memory for each picture: the card may still read the last one's.
    m_gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(list.Ids().size() * sizeof(std::uint32_t)),
                      list.Ids().data(), GL_STREAM_DRAW);
}

QOpenGLShaderProgram& ModelPainter::Use(Program number)
{
    QOpenGLShaderProgram& program = m_programs[number];
    program.bind();
    program.setUniformValue("view", m_view);
    program.setUniformValue("projection", m_projection);
    program.setUniformValue("instances", Shaders::UnitInstances);
    program.setUniformValue("picture", Shaders::UnitTexture);
    program.setUniformValue("highlight", LinearOf(m_highlight));
    program.setUniformValue("section", m_section);
    m_gl.glUniform2ui(program.uniformLocation("selection"), m_selection.first, m_selection.last);
    return program;
}

void ModelPainter::Prepare(const DrawCommand& command, const GpuScene& scene)
{
    const bool far = command.pass == DrawCommand::PassTransparentFar;
    const bool near = command.pass == DrawCommand::PassTransparentNear;
    const bool blends = far || near || PartOf(command.pass) != GpuScene::PartFaces;
    blends ? m_gl.glEnable(GL_BLEND) : m_gl.glDisable(GL_BLEND);
    m_gl.glDepthMask(far || near ? GL_FALSE : GL_TRUE);
    if (far || near) {
        m_gl.glEnable(GL_CULL_FACE);
        m_gl.glCullFace(far ? GL_FRONT : GL_BACK);
        m_gl.glFrontFace(command.mirrored ? GL_CW : GL_CCW);
    } else {
        m_gl.glDisable(GL_CULL_FACE);
    }
    if (PartOf(command.pass) != GpuScene::PartFaces) {
        QOpenGLShaderProgram& lines =
            Use(command.pass == DrawCommand::PassLines ? ProgramLines : ProgramEdges);
        lines.setUniformValue("strength", command.pass == DrawCommand::PassTangents ? 0.28F : 0.75F);
        return;
    }
    QOpenGLShaderProgram& program = Use(ProgramFaces);
    const GLuint texture = scene.Texture(command.texture);
    program.setUniformValue("textured", texture != 0);
    program.setUniformValue("lit", command.lit);
    program.setUniformValue("solid", m_solid);
    m_gl.glActiveTexture(GL_TEXTURE0 + Shaders::UnitTexture);
    m_gl.glBindTexture(GL_TEXTURE_2D, texture);
}

bool ModelPainter::Draw(const DrawList& list, GpuScene& scene, std::uint64_t triangles)
{
    m_gl.glEnable(GL_DEPTH_TEST);
    m_gl.glDepthFunc(GL_LEQUAL);
    m_gl.glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    // Surfaces stand back a little, so that edges on them are seen whole.
    m_gl.glEnable(GL_POLYGON_OFFSET_FILL);
    m_gl.glPolygonOffset(1.0F, 1.0F);
    m_gl.glActiveTexture(GL_TEXTURE0 + Shaders::UnitInstances);
    m_gl.glBindTexture(GL_TEXTURE_BUFFER, scene.InstanceTexture());
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_ids);
    EnableSection(true);
    const DrawCommand* prepared = nullptr;
    std::uint64_t left = std::max<std::uint64_t>(triangles, 1);
    while (m_command < list.Commands().size() && left > 0) {
        const DrawCommand& command = list.Commands()[m_command];
        const bool same = prepared && prepared->pass == command.pass && prepared->lit == command.lit &&
                          prepared->texture == command.texture && prepared->mirrored == command.mirrored;
        const int solid =
            m_hasSection && command.pass == DrawCommand::PassOpaque ? scene.SolidOf(command.shape) : 0;
        if (!same || solid != m_solid) {
            m_solid = solid;
            Prepare(command, scene);
            prepared = &command;
        }
        left -= std::min(left, DrawPiece(command, scene, left));
        if (m_instance == command.count) {
            ++m_command;
            m_instance = 0;
        }
    }
    EnableSection(false);
    m_gl.glDisable(GL_POLYGON_OFFSET_FILL);
    m_gl.glDisable(GL_CULL_FACE);
    m_gl.glDepthMask(GL_TRUE);
    m_gl.glBindVertexArray(0);
    return m_command == list.Commands().size();
}

std::uint64_t ModelPainter::DrawPiece(const DrawCommand& command, GpuScene& scene, std::uint64_t budget)
{
    const GpuScene::PartKind part = PartOf(command.pass);
    const std::uint32_t corners = part == GpuScene::PartFaces ? 3 : 2;
    const std::uint32_t indices = scene.IndexCount(command.shape, part);
    const std::uint64_t each = std::max<std::uint64_t>(indices / corners, 1);
    if (indices == 0) {
        m_instance = command.count;
        return 0;
    }
    const std::uint32_t ids = command.first + m_instance;
    if (m_index == 0 && each <= budget) {
        const auto fitting =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(budget / each, command.count - m_instance));
        scene.Draw(command.shape, part, 0, indices, ids, fitting);
        m_instance += fitting;
        return fitting * each;
    }
    // One instance is more than the budget: a part of its indices.
    const auto count =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(corners * budget, indices - m_index));
    scene.Draw(command.shape, part, m_index, count, ids, 1);
    m_index += count;
    if (m_index == indices) {
        m_index = 0;
        ++m_instance;
    }
    return std::max<std::uint64_t>(count / corners, 1);
}

void ModelPainter::EnableSection(bool on)
{
    on&& m_hasSection ? m_gl.glEnable(GL_CLIP_DISTANCE0) : m_gl.glDisable(GL_CLIP_DISTANCE0);
}

void ModelPainter::DrawPlain(const DrawList& list, GpuScene& scene, Program number)
{
    number == ProgramMask ? m_gl.glDisable(GL_DEPTH_TEST) : m_gl.glEnable(GL_DEPTH_TEST);
    EnableSection(true);
    m_gl.glDepthFunc(GL_LEQUAL);
    m_gl.glDisable(GL_BLEND);
    m_gl.glDisable(GL_CULL_FACE);
    m_gl.glActiveTexture(GL_TEXTURE0 + Shaders::UnitInstances);
    m_gl.glBindTexture(GL_TEXTURE_BUFFER, scene.InstanceTexture());
    m_gl.glBindBuffer(GL_ARRAY_BUFFER, m_ids);
    Use(number);
    for (const DrawCommand& command : list.Commands()) {
        const GpuScene::PartKind part = PartOf(command.pass);
        const std::uint32_t indices = scene.IndexCount(command.shape, part);
        if (indices != 0 && command.pass != DrawCommand::PassTransparentFar) {
            scene.Draw(command.shape, part, 0, indices, command.first, command.count);
        }
    }
    EnableSection(false);
    m_gl.glBindVertexArray(0);
}
