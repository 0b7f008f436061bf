// The object behind ModelData_BRepRepresentation. This room knows no geometry kernel: an engine derives a
// class that holds its shape, with the appearances of its faces, and wraps it.
//
//     class KernelBody : public BRepImpl { ... };
//     auto brep = MakeHandle<ModelData_BRepRepresentation>(new KernelBody(shape));
//     auto* back = dynamic_cast<KernelBody*>(brep.Impl());
#pragma once

#include <cadex/internal/Object.hxx>

namespace cadex {
namespace internal {

class BRepImpl : public ObjectImpl
{
public:
    BRepImpl() : ObjectImpl(TypeBRepRepresentation) {}
    ~BRepImpl() override;
};

} // namespace internal
} // namespace cadex
