#include "sdk/parasolid/XtBodyPlan.h"

#include <algorithm>

namespace cadex::parasolid {

using mesh::PolygonBody;

XtBodyPlan::XtBodyPlan(const mesh::FlatPart& flat, const mesh::FlatBody& own) : part(flat), source(own)
{
    Offsets sum;
    for (const PolygonBody& shell : source.shells) {
        offsets.push_back(sum);
        const auto add = [](int& to, std::size_t count) { to += static_cast<int>(count); };
        add(sum.faces, shell.faces.size());
        add(sum.loops, shell.loops.size());
        add(sum.fins, shell.coedges.size());
        add(sum.edges, shell.edges.size());
        add(sum.vertices, shell.vertices.size());
        add(sum.lonely,
            static_cast<std::size_t>(std::count_if(shell.coedges.begin(), shell.coedges.end(), IsLonely)));
        for (const PolygonBody::Face& face : shell.faces) {
            colouredFaces += part.IsColoured(face) ? 1 : 0;
        }
    }
    offsets.push_back(sum);
}

int XtBodyPlan::Place(int first)
{
    const int cells = source.isClosed ? ShellCount() + 1 : 1;
    body = first;
    regions = body + 1;
    shells = regions + cells;
    faces = shells + (source.isClosed ? 2 * ShellCount() : 1);
    loops = faces + Total().faces;
    fins = loops + Total().loops;
    lonely = fins + Total().fins;
    edges = lonely + Total().lonely;
    vertices = edges + Total().edges;
    planes = vertices + Total().vertices;
    lines = planes + Total().faces;
    points = lines + Total().edges;
    chains = points + Total().vertices;
    looks = chains + (LookCount() > 0 ? 2 : 0);
    highestId = (faces - regions) + 2 * (Total().faces + Total().edges + Total().vertices) + Total().loops +
                LookCount();
    return looks + 2 * LookCount();
}

} // namespace cadex::parasolid
