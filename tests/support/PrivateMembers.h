// Reaches private members, for state that no public call shows. Access is not checked in explicit instantiations.
#ifndef QEL_TEST_PRIVATE_MEMBERS_H
#define QEL_TEST_PRIVATE_MEMBERS_H

/**
 * @code
 * struct Count
 * {
 *     using type = int Counter::*;
 *     friend type member(Count);
 * };
 * template struct PrivateMember<Count, &Counter::m_count>;
 * // counter.*member(Count())
 * @endcode
 */
template <class Tag, typename Tag::type pointer> struct PrivateMember
{
    friend typename Tag::type member(Tag) { return pointer; }
};

#endif
