/** @file
    The lines of a text, and text in columns: what qv::String has beyond qv_string.hpp.

        for( std::u32string_view line : text.lines() )
            ...
        qv::print( "%s %s\n", name.fitted( 20, QV_DISPLAY_FLAG_ELLIPSIS ), count.fitted( 6, QV_DISPLAY_FLAG_RIGHT ) );

    qv_unicode_width.h tells how many cells characters take. */

#ifndef QV_TEXT_HPP
#define QV_TEXT_HPP

#include "qv/cpp/qv_containers.hpp"

namespace qv
{
/** The lines of a text: what stands between LF, CR LF and CR, without them. An end at the end of the text begins no other
    line. A forward range, in linear time, without copies. The views are valid while the range lives. */
class TextLines
{
public:
    /** The lines of a text. */
    explicit TextLines( String text ) : text_( std::move( text ) )
    {
    }

    class Iterator
    {
    public:
        using value_type       = std::u32string_view;
        using difference_type  = std::ptrdiff_t;
        using iterator_concept = std::forward_iterator_tag;

        Iterator() = default;

        Iterator( const char32_t *at, const char32_t *end ) : next_( at ), end_( end )
        {
            ++*this;
        }

        std::u32string_view operator*() const
        {
            return { at_, static_cast< size_t >( lineEnd_ - at_ ) };
        }

        Iterator &operator++()
        {
            at_ = lineEnd_ = next_;

            while( lineEnd_ != end_ && *lineEnd_ != U'\n' && *lineEnd_ != U'\r' )
                lineEnd_++;

            bool isPair = end_ - lineEnd_ > 1 && lineEnd_[0] == U'\r' && lineEnd_[1] == U'\n';
            next_       = lineEnd_ + ( isPair ? 2 : lineEnd_ != end_ );
            return *this;
        }

        Iterator operator++( int )
        {
            Iterator before = *this;
            ++*this;
            return before;
        }

        friend bool operator==( const Iterator &a, const Iterator &b )
        {
            return a.at_ == b.at_;
        }

        friend bool operator==( const Iterator &it, std::default_sentinel_t )
        {
            return it.at_ == it.end_;
        }

    private:
        const char32_t *at_ = nullptr, *lineEnd_ = nullptr, *next_ = nullptr, *end_ = nullptr;
    };

    /** The first line. */
    [[nodiscard]] Iterator begin() const
    {
        return Iterator( text_.begin(), text_.end() );
    }

    /** After the last line. */
    [[nodiscard]] std::default_sentinel_t end() const
    {
        return {};
    }

private:
    String text_;
};

inline TextLines String::lines() const
{
    return TextLines( *this );
}

inline Vector< String > String::wrapped( QV_INT width, QV_INT flags ) const
{
    return Vector< String >::own( qvStringDisplayWrap( raw(), width, flags ) );
}

static_assert( std::ranges::forward_range< TextLines > );
} // namespace qv

#endif
