#include "refbase.h"

namespace Tarvo {

bool RefCounter::AttemptIncStrong()
{
    int current = strong_.load(std::memory_order_acquire);
    while (current > 0) {
        if (strong_.compare_exchange_weak(current, current + 1, std::memory_order_acq_rel)) {
            return true;
        }
    }
    return false;
}

void RefCounter::DecWeak()
{
    if (weak_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

// The object itself holds one weak reference on its counter, dropped in the destructor, so the
// counter outlives the object exactly as long as some wptr still points at it.
RefBase::RefBase() : refs_(new RefCounter)
{
    refs_->IncWeak();
}

RefBase::~RefBase()
{
    refs_->DecWeak();
}

void RefBase::IncStrongRef(const void* objectId) const
{
    if (refs_->IncStrong() == 0) {
        const_cast<RefBase*>(this)->OnFirstStrongRef(objectId);
    }
}

void RefBase::DecStrongRef(const void* objectId) const
{
    if (refs_->DecStrong() == 1) {
        auto* self = const_cast<RefBase*>(this);
        self->OnLastStrongRef(objectId);
        delete self;
    }
}

bool RefBase::AttemptIncStrongRef(const void*) const
{
    return refs_->AttemptIncStrong();
}

int RefBase::GetSptrRefCount() const
{
    return refs_->GetStrong();
}

void RefBase::IncWeakRef(const void*) const
{
    refs_->IncWeak();
}

void RefBase::DecWeakRef(const void*) const
{
    refs_->DecWeak();
}

// Excludes the object's own hold on its counter.
int RefBase::GetWptrRefCount() const
{
    return refs_->GetWeak() - 1;
}

void RefBase::OnFirstStrongRef(const void*) {}

void RefBase::OnLastStrongRef(const void*) {}

}  // namespace Tarvo
