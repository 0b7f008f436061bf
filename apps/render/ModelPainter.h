#pragma once

#include "apps/render/GpuScene.h"
#include "apps/render/Renderer.h"

#include <QOpenGLShaderProgram>
#include <QVector4D>

/// Carries out a draw list on the card, piece by piece: the programs, the states between passes, and a place
/// in the list to go on from. Every call needs the OpenGL context that it was made in to be current.
class ModelPainter
{
public:
    explicit ModelPainter(GpuScene::Gl& gl) : m_gl(gl) {}
    ~ModelPainter() { Release(); }
    ModelPainter(const ModelPainter&) = delete;
    ModelPainter& operator=(const ModelPainter&) = delete;

    /// Compiles the programs. Gives an empty text, or the compiler's message.
    QString Initialize();
    void Release();

    void DrawBackground(const Frame& frame);
    /// Takes the list's instance numbers to the card and goes to its start.
    void Start(const DrawList& list, const Frame& frame, const Vec3& origin, const QMatrix4x4& projection);
    /// Draws on for about so many triangles (at least one piece); true at the end of the list.
    bool Draw(const DrawList& list, GpuScene& scene, std::uint64_t triangles);
    /// Draws instance numbers plus 1 in place of colours, all of the list.
    void DrawNumbers(const DrawList& list, GpuScene& scene) { DrawPlain(list, scene, ProgramPick); }
    /// Draws all of the list in white, whatever stands before it.
    void DrawMask(const DrawList& list, GpuScene& scene) { DrawPlain(list, scene, ProgramMask); }

private:
    enum Program
    {
        ProgramFaces,
        ProgramLines,
        ProgramEdges,
        ProgramPick,
        ProgramMask,
        ProgramBackground,
        ProgramCount
    };

    /// Draws what fits into `budget` of the command from the present place on; gives the cost.
    std::uint64_t DrawPiece(const DrawCommand& command, GpuScene& scene, std::uint64_t budget);
    void Prepare(const DrawCommand& command, const GpuScene& scene);
    QOpenGLShaderProgram& Use(Program program);
    void DrawPlain(const DrawList& list, GpuScene& scene, Program program);
    void EnableSection(bool on);

    GpuScene::Gl& m_gl;
    QOpenGLShaderProgram m_programs[ProgramCount];
    GLuint m_ids = 0;
    GLuint m_emptyState = 0;
    QMatrix4x4 m_view;
    QMatrix4x4 m_projection;
    InstanceRange m_selection;
    QColor m_highlight;
    QVector4D m_section;
    bool m_hasSection = false;
    int m_solid = 0; ///< of the shape that is drawn
    // The place in the list.
    std::size_t m_command = 0;
    std::uint32_t m_instance = 0;
    std::uint32_t m_index = 0;
};
