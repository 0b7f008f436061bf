#include "sdk/parasolid/XtSchema.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <unordered_map>

namespace cadex::parasolid {

namespace {

/// In the order of the enumeration.
constexpr std::string_view FieldNames[] = {"assembly",
                                           "axis",
                                           "b_curve",
                                           "base",
                                           "basis_curve",
                                           "blend",
                                           "blend_type",
                                           "body",
                                           "body_type",
                                           "boundary",
                                           "bspline_vertices",
                                           "centre",
                                           "chart",
                                           "chordal_error",
                                           "closed",
                                           "cos_half_angle",
                                           "curve",
                                           "definition",
                                           "degree",
                                           "direction",
                                           "edge",
                                           "end",
                                           "entries",
                                           "face",
                                           "fields",
                                           "forward",
                                           "backward",
                                           "front_face",
                                           "front_shell",
                                           "halfedge",
                                           "hvec",
                                           "identifier",
                                           "knot_mult",
                                           "knots",
                                           "loop",
                                           "major_radius",
                                           "minor_radius",
                                           "mult",
                                           "n_knots",
                                           "n_u_knots",
                                           "n_u_vertices",
                                           "n_v_knots",
                                           "n_v_vertices",
                                           "n_vertices",
                                           "next",
                                           "next_front",
                                           "next_in_part",
                                           "next_of_part",
                                           "node_id",
                                           "normal",
                                           "nurbs",
                                           "offset",
                                           "original",
                                           "other",
                                           "owner",
                                           "parm_1",
                                           "parm_2",
                                           "part",
                                           "periodic",
                                           "point",
                                           "point_1",
                                           "point_2",
                                           "profile",
                                           "pvec",
                                           "radius",
                                           "range",
                                           "rational",
                                           "region",
                                           "rotation_matrix",
                                           "scale",
                                           "section",
                                           "sense",
                                           "shell",
                                           "sin_half_angle",
                                           "spine",
                                           "start",
                                           "string",
                                           "sub_instance",
                                           "surface",
                                           "sweep",
                                           "tolerance",
                                           "tolerance_to_original",
                                           "transform",
                                           "translation_vector",
                                           "type",
                                           "u_degree",
                                           "u_knot_mult",
                                           "u_knots",
                                           "u_periodic",
                                           "v_degree",
                                           "v_knot_mult",
                                           "v_knots",
                                           "v_periodic",
                                           "values",
                                           "vertex",
                                           "vertex_dim",
                                           "vertices",
                                           "x_axis"};
static_assert(std::size(FieldNames) == static_cast<std::size_t>(Field::Unknown));

struct NodeRow
{
    int type;
    const char* fields; ///< name:kind, name:kindN for an array, name:kind[] for as many as the node says
};

/// What curves and surfaces begin with.
constexpr const char* GeometryLead =
    "node_id:d attributes_groups:p owner:p next:p previous:p geometric_owner:p sense:c ";

constexpr NodeRow GeometryRows[] = {
    {30, "pvec:v direction:v"},
    {31, "centre:v normal:v x_axis:v radius:f"},
    {32, "centre:v normal:v x_axis:v major_radius:f minor_radius:f"},
    {38, "surface:p2 chart:p start:p end:p"},
    {50, "pvec:v normal:v x_axis:v"},
    {51, "pvec:v axis:v radius:f x_axis:v"},
    {52, "pvec:v axis:v radius:f sin_half_angle:f cos_half_angle:f x_axis:v"},
    {53, "centre:v radius:f axis:v x_axis:v"},
    {54, "centre:v axis:v major_radius:f minor_radius:f x_axis:v"},
    {56, "blend_type:c surface:p2 spine:p range:f2 thumb_weight:f2 boundary:p2 start:p end:p"},
    {59, "boundary:n blend:p"},
    {60, "check:c true_offset:l surface:p offset:f scale:f"},
    {67, "section:p sweep:v scale:f"},
    {68, "profile:p base:v axis:v start:v end:v start_param:f end_param:f x_axis:v scale:f"},
    {124, "nurbs:p data:p"},
    {133, "basis_curve:p point_1:v point_2:v parm_1:f parm_2:f"},
    {134, "nurbs:p data:p"},
    {137, "surface:p b_curve:p original:p tolerance_to_original:f"},
};

constexpr NodeRow OtherRows[] = {
    {10, "highest_node_id:d attributes_groups:p attribute_chains:p list:p surface:p curve:p point:p key:p "
         "res_size:f res_linear:f ref_instance:p next:p previous:p state:u owner:p type:u sub_instance:p"},
    {11, "node_id:d attributes_groups:p type:u part:p transform:p assembly:p next_in_part:p prev_in_part:p "
         "next_of_part:p prev_of_part:p"},
    {12, "highest_node_id:d attributes_groups:p attribute_chains:p surface:p curve:p point:p key:p "
         "res_size:f res_linear:f ref_instance:p next:p previous:p state:u owner:p body_type:u "
         "nom_geom_state:u shell:p boundary_surface:p boundary_curve:p boundary_point:p region:p edge:p "
         "vertex:p"},
    {13, "node_id:d attributes_groups:p body:p next:p face:p edge:p vertex:p region:p front_face:p"},
    {14, "node_id:d attributes_groups:p tolerance:f next:p previous:p loop:p shell:p surface:p sense:c "
         "next_on_surface:p previous_on_surface:p next_front:p previous_front:p front_shell:p"},
    {15, "node_id:d attributes_groups:p halfedge:p face:p next:p"},
    {16, "node_id:d attributes_groups:p tolerance:f halfedge:p previous:p next:p curve:p next_on_curve:p "
         "previous_on_curve:p owner:p"},
    {17, "attributes_groups:p loop:p forward:p backward:p vertex:p other:p edge:p curve:p next_at_vx:p "
         "sense:c"},
    {18, "node_id:d attributes_groups:p halfedge:p previous:p next:p point:p tolerance:f owner:p"},
    {19, "node_id:d attributes_groups:p body:p next:p previous:p shell:p type:c"},
    {29, "node_id:d attributes_groups:p owner:p next:p previous:p pvec:v"},
    {40, "base_parameter:f base_scale:f chart_count:d chordal_error:f angular_error:f parameter_error:f2 "
         "hvec:h[]"},
    {41, "type:c hvec:h[]"},
    {45, "vertices:f[]"},
    {70, "node_id:d owner:p next:p previous:p list_type:d list_length:d block_length:d size_of_entry:d "
         "list_block:p finger_block:p finger_index:d notransmit:l"},
    {74, "n_entries:d next_block:p entries:p[]"},
    {79, "string:c[]"},
    {80, "next:p identifier:p type_id:d actions:u8 field_names:p legal_owners:l14 fields:u[]"},
    {81, "node_id:d definition:p owner:p next:p previous:p next_of_type:p previous_of_type:p fields:p[]"},
    {82, "values:d[]"},
    {83, "values:f[]"},
    {84, "values:c[]"},
    {85, "values:v[]"},
    {86, "values:v[]"},
    {87, "values:v[]"},
    {88, "values:d[]"},
    {89, "values:v[]"},
    {90, "node_id:d attributes_groups:p owner:p next:p previous:p type:u first_member:p"},
    {91, "dummy_node_id:d owning_group:p owner:p next:p previous:p next_member:p previous_member:p"},
    {98, "values:w[]"},
    {99, "names:p[]"},
    {100, "node_id:d owner:p next:p previous:p rotation_matrix:f9 translation_vector:v scale:f flag:d "
          "perspective_vector:v"},
    {101, "assembly:p attribute:p body:p transform:p surface:p curve:p point:p alive:l attrib_def:p "
          "highest_id:d current_id:d"},
    {102, "string:c[]"},
    {125, "original_uint:i original_vint:i extended_uint:i extended_vint:i self_int:u original_u_start:c "
          "original_u_end:c original_v_start:c original_v_end:c extended_u_start:c extended_u_end:c "
          "extended_v_start:c extended_v_end:c analytic_form_type:c swept_form_type:c spun_form_type:c "
          "blend_form_type:c analytic_form:p swept_form:p spun_form:p blend_form:p"},
    {126, "u_periodic:l v_periodic:l u_degree:n v_degree:n n_u_vertices:d n_v_vertices:d u_knot_type:u "
          "v_knot_type:u n_u_knots:d n_v_knots:d rational:l u_closed:l v_closed:l surface_form:u "
          "vertex_dim:n bspline_vertices:p u_knot_mult:p v_knot_mult:p u_knots:p v_knots:p"},
    {127, "mult:n[]"},
    {128, "knots:f[]"},
    {135, "self_int:u analytic_form:p"},
    {136, "degree:n n_vertices:d vertex_dim:n n_knots:d knot_type:u periodic:l closed:l rational:l "
          "curve_form:u bspline_vertices:p knot_mult:p knots:p"},
    {141, "owner:p next:p previous:p shared_geometry:p"},
};

/// Before version 12.
constexpr NodeRow OldRows[] = {
    {12, "highest_node_id:d attributes_groups:p attribute_chains:p surface:p curve:p point:p key:p "
         "res_size:f res_linear:f ref_instance:p next:p previous:p state:u owner:p body_type:u shell:p "
         "boundary_surface:p boundary_curve:p boundary_point:p region:p edge:p vertex:p"},
    {17, "loop:p forward:p backward:p vertex:p other:p edge:p curve:p next_at_vx:p sense:c"},
};
constexpr int FinsWithAttributes = 12000; ///< first version that has them

Layout Parse(std::string_view text)
{
    std::vector<FieldLayout> fields;
    while (!text.empty()) {
        const std::size_t colon = text.find(':');
        const std::size_t blank = std::min(text.find(' '), text.size());
        const std::string_view count = text.substr(colon + 2, blank - colon - 2);
        fields.push_back({FieldNamed(text.substr(0, colon)), text[colon + 1],
                          count.empty()   ? 0
                          : count == "[]" ? 1
                                          : std::stoi(std::string(count))});
        text.remove_prefix(std::min(blank + 1, text.size()));
    }
    return Layout(std::move(fields));
}

template <std::size_t Count>
void AddRows(const NodeRow (&rows)[Count], std::string_view lead, std::map<int, Layout>& layouts)
{
    for (const NodeRow& row : rows) {
        layouts.emplace(row.type, Parse(std::string(lead) + row.fields));
    }
}

const Layout* Find(const std::map<int, Layout>& layouts, int type)
{
    const auto found = layouts.find(type);
    return found == layouts.end() ? nullptr : &found->second;
}

} // namespace

Field FieldNamed(std::string_view name)
{
    static const std::unordered_map<std::string_view, Field> fields = [] {
        std::unordered_map<std::string_view, Field> result;
        for (std::size_t i = 0; i < std::size(FieldNames); ++i) {
            result.emplace(FieldNames[i], static_cast<Field>(i));
        }
        result.emplace("fin", Field::Halfedge);
        return result;
    }();
    const auto found = fields.find(name);
    return found == fields.end() ? Field::Unknown : found->second;
}

int NumbersOf(char kind)
{
    switch (kind) {
    case 'u':
    case 'c':
    case 'l':
    case 'n':
    case 'w':
    case 'd':
    case 'p':
    case 'f':
        return 1;
    case 'i':
        return 2;
    case 'v':
    case 'h':
        return 3;
    case 'b':
        return 6;
    default:
        return 0;
    }
}

Layout::Layout(std::vector<FieldLayout> fields) : myFields(std::move(fields))
{
    mySlots.fill(Absent);
    int next = 0;
    for (const FieldLayout& field : myFields) {
        std::int32_t& slot = mySlots[static_cast<std::size_t>(field.field)];
        if (slot == Absent) {
            slot = next;
        }
        next += NumbersOf(field.kind) * field.Times();
    }
}

const FieldLayout* Layout::Find(Field field) const
{
    const auto found = std::find_if(myFields.begin(), myFields.end(),
                                    [&](const FieldLayout& f) { return f.field == field; });
    return found == myFields.end() ? nullptr : &*found;
}

const Layout* BaseLayout(int type)
{
    static const std::map<int, Layout> layouts = [] {
        std::map<int, Layout> result;
        AddRows(GeometryRows, GeometryLead, result);
        AddRows(OtherRows, "", result);
        return result;
    }();
    return Find(layouts, type);
}

const Layout* FixedLayout(int type, int version)
{
    static const std::map<int, Layout> old = [] {
        std::map<int, Layout> result;
        AddRows(OldRows, "", result);
        return result;
    }();
    return version < FinsWithAttributes ? Find(old, type) : nullptr;
}

} // namespace cadex::parasolid
