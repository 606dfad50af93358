package VEL::Units;

use strict;
use warnings;
use feature 'signatures';

use POSIX ();
use threads::shared;

=head1 NAME

VEL::Units - units: which exist, which are compatible, and how numbers are converted

=head1 DESCRIPTION

The library udunits2 knows the units; it is called through L<FFI::Platypus>. This package
defines how a unit is written, more strictly than the library:

    unit   := "1" | "%" | factor { " " factor } [ "/" factor ]
    factor := name [ "^" integer ]

for example C<kg m^-3>, C<W m^-2 K^-1>, C<m/s>, but not C<kg/m3>, C<m s-1>, C<2 m>. A name
has at most one prefix: a symbol before a symbol (C<km>), or a word before a word
(C<kilometer>). Words have small letters, except where the table of units has a capital.

C<C> and C<F> mean degrees Celsius and Fahrenheit. Alone they are a temperature, in a
product a difference of temperatures. Angles are a separate quantity: C<rad s^-1> is not
compatible with C<Hz>, and C<degree> is not compatible with C<%>.

The unit system is loaded when it is first needed. During this, the locale is changed, so
that the unit system reads decimal points, and its messages for developers are suppressed.

=cut

# The names in the unit system of our names: alone, and in a product.
my %ALONE = (C => 'degC', F => 'degF', '%' => 'percent', rev => 'turn', deg => 'degree', cP => 'centipoise');
my %WITHIN = (C => 'K', F => 'degR', degC => 'K', degF => 'degR', rev => 'turn', deg => 'degree',
    cP => 'centipoise');

# Names that take the same prefixes as symbols.
my %TAKES_SYMBOL = map { $_ => 1 } qw(bar cal);

# Words that have capitals in the table of units.
my $CAPITALS = qr/^(?:UK|US|IT|EC|Canadian|Gregorian|Julian)(?=_)|^(?:Btus?|Celsius|Fahrenheit)\z
    |(?<=_)(?:Btus?|TNT)\z|Hg\z|(?<=deg|ree)s?_?(?:[CEFKNRTW]|Celsius)\z/x;

my $SYMBOL_PREFIX = qr/da|[YZEPTGMkhdcmunpfazy]/;
my $WORD_PREFIX   = qr/yotta|zetta|exa|peta|tera|giga|mega|kilo|hecto|deka|deci|centi|milli
    |micro|nano|pico|femto|atto|zepto|yocto/x;

# The length of the longest unit that is accepted.
my $LONGEST = 200;

my $FACTOR = qr/[A-Za-z_]+(?:\^[+-]?[1-9])?/;
my $UNIT   = qr{1|%|$FACTOR(?: $FACTOR)*(?:/$FACTOR)?};

# The functions of the unit system: names, types of arguments and of results.
my @FUNCTIONS = (
    [ ut_set_error_message_handler => ['opaque'],                       'opaque' ],
    [ ut_read_xml                  => ['string'],                       'opaque' ],
    [ ut_parse                     => [ 'opaque', 'string', 'int' ],    'opaque' ],
    [ ut_get_unit_by_symbol        => [ 'opaque', 'string' ],           'opaque' ],
    [ ut_get_unit_by_name          => [ 'opaque', 'string' ],           'opaque' ],
    [ ut_are_convertible           => [ 'opaque', 'opaque' ],           'int' ],
    [ ut_get_converter             => [ 'opaque', 'opaque' ],           'opaque' ],
    [ cv_convert_double            => [ 'opaque', 'double' ],           'double' ],
    [ ut_free  => ['opaque'], 'void' ],
    [ cv_free  => ['opaque'], 'void' ],
    [ ut_format => [ 'opaque', 'opaque', 'size_t', 'uint' ],            'int' ],
);

# Asks ut_format to write a unit in base units.
my $IN_BASE_UNITS = 8;
my $LONGEST_IN_BASE_UNITS = 512;

# The usual name of the library.
my $LIBRARY = 'libudunits2.so.0';

# The unit system, which all threads share. Only one thread may use it at a time, so it is
# locked while it is used. A program with threads loads C<threads> before this package.
my $shared_system : shared;

my ($system, $failure);
my (%units, %converters);

# The largest number of units, and of converters, that are kept.
my $MOST = 1000;
my $converter_count = 0;

# Kept units belong to the thread that made them; only it may free them.
sub CLONE {
    (%units, %converters) = ();
    $converter_count = 0;
    return;
}

=head1 FUNCTIONS

=over

=item C<load>

Loads the unit system. Returns nothing, or a message if it cannot be loaded.

=cut

sub load () {
    return '' if $system;
    return $failure if defined $failure;
    lock $shared_system;
    my $locale = POSIX::setlocale(POSIX::LC_NUMERIC());
    POSIX::setlocale(POSIX::LC_NUMERIC(), 'C');
    my $loaded = eval { _load() };
    my $error  = $@;
    POSIX::setlocale(POSIX::LC_NUMERIC(), $locale);
    return '' if $loaded;
    $error =~ s/(?: \(you may need| in \@INC| at \S+ line \d).*|\s+\z//s;
    return $failure = "The unit system cannot be loaded: $error";
}

sub _load () {
    require FFI::Platypus;
    require FFI::Platypus::Buffer;
    my $ffi = FFI::Platypus->new(api => 1);
    $ffi->lib(_library());
    $ffi->attach($_->[0] => $_->[1] => $_->[2]) for @FUNCTIONS;
    $system = $shared_system //= _read_table($ffi->find_symbol('ut_ignore'));
    die "its table of units cannot be read\n" if !$system;
    return 1;
}

# The table reports each unit that has the name of another unit; $silence gets the reports.
sub _read_table ($silence) {
    my $speak = ut_set_error_message_handler($silence);
    my $table = ut_read_xml(undef);
    ut_set_error_message_handler($speak);
    return $table;
}

# The name under which the library can be loaded. The warning about its usual name is
# suppressed: if the search fails too, that failure is reported.
sub _library () {
    local $SIG{__WARN__} = sub ($text) {
        warn $text if $text !~ /^warning: error loading \Q$LIBRARY\E:/;
    };
    my $trial = FFI::Platypus->new(api => 1, lib => $LIBRARY);
    return $trial->find_symbol('ut_parse') ? $LIBRARY : _search();
}

# For a library with another name. The search takes longer than all the rest of loading.
sub _search () {
    require FFI::CheckLib;
    return FFI::CheckLib::find_lib(lib => 'udunits2') || die "the library udunits2 is not installed\n";
}

=item C<exists_unit($text)>

Whether the text is a unit, and written as one.

=cut

sub exists_unit ($text) {
    _make_room();
    return _unit($text) ? 1 : 0;
}

=item C<remembered>

The number of units and converters that are kept for the next question. It has a limit.

=cut

sub remembered () { return keys(%units) + $converter_count }

=item C<system_address>

Where the unit system is in memory, the same in all threads; C<undef> until it is
loaded.

=cut

sub system_address () { return $system }

# Called where no unit is in use.
sub _make_room () {
    return if keys %units < $MOST && $converter_count < $MOST;
    lock $shared_system;
    cv_free($_) for grep { $_ } map { values %$_ } values %converters;
    ut_free($_) for grep { $_ } values %units;
    (%units, %converters) = ();
    $converter_count = 0;
    return;
}

# The unit of the unit system, 0 if there is none.
sub _unit ($text) {
    return 0 if length $text > $LONGEST;
    return $units{$text} //= _parse($text) // 0;
}

sub _parse ($text) {
    return undef if load() || $text !~ /^$UNIT\z/;
    lock $shared_system;
    return ut_parse($system, $ALONE{$text}, 0) if $ALONE{$text};
    my $within = $text =~ /[ ^\/]/;
    my @names  = $text =~ /[A-Za-z_]+/g;
    return undef if grep { !_is_name($WITHIN{$_} // $_) } @names;
    my $theirs = $within ? $text =~ s/([A-Za-z_]+)/$WITHIN{$1} \/\/ $1/ger : $text;
    return ut_parse($system, $theirs, 0);
}

# The unit system would take any number of prefixes, and any letter case.
sub _is_name ($name) {
    return 1 if _has_symbol($name);
    return 1 if _is_word($name);
    return 1 if $name =~ /^$SYMBOL_PREFIX(.+)$/
        && $1 ne 'kg' && ($TAKES_SYMBOL{$1} || _has_symbol($1));
    return 1 if $name =~ /^$WORD_PREFIX(.+)$/ && $1 ne 'kilogram' && _is_word($1);
    return 0;
}

sub _has_symbol ($name) { return _is_found(scalar ut_get_unit_by_symbol($system, $name)) }

sub _is_word ($name) {
    return $name =~ s/$CAPITALS//gr !~ /[A-Z]/ && _is_found(scalar ut_get_unit_by_name($system, $name)) ? 1 : 0;
}

# The unit system gives a copy of the unit, which we own.
sub _is_found ($unit) {
    return 0 if !$unit;
    ut_free($unit);
    return 1;
}

# The power of angles in a unit, which the unit system ignores.
sub _angle ($unit) {
    my $room = '';
    FFI::Platypus::Buffer::grow($room, $LONGEST_IN_BASE_UNITS);
    my ($address) = FFI::Platypus::Buffer::scalar_to_buffer($room);
    my $length  = ut_format($unit, $address, $LONGEST_IN_BASE_UNITS, $IN_BASE_UNITS);
    my $written = $length > 0 ? FFI::Platypus::Buffer::buffer_to_scalar($address, $length) : '';
    return $written =~ /\brad(-?[0-9]+)?\b/ ? $1 // 1 : 0;
}

=item C<is_convertible($from, $to)>

Whether quantities in one unit can be converted to the other.

=cut

sub is_convertible ($from, $to) { return _converter($from, $to) ? 1 : 0 }

=item C<is_dimensionless($text)>

Whether the unit is a plain number, such as C<1>, C<%> or C<kg kg^-1>.

=cut

sub is_dimensionless ($text) { return is_convertible($text, '1') }

# 0 if there is none.
sub _converter ($from, $to) {
    my $known = exists $converters{$from} ? $converters{$from}{$to} : undef;
    return $known if defined $known;
    _make_room();
    return 0 if !_unit($from) || !_unit($to);
    $converter_count++;
    return $converters{$from}{$to} = _make_converter($from, $to) // 0;
}

# The unit system also converts a time to a frequency. This is not a conversion of one
# quantity: zero has no counterpart then.
sub _make_converter ($from, $to) {
    lock $shared_system;
    my ($one, $other) = (_unit($from), _unit($to));
    return undef if _angle($one) ne _angle($other) || !ut_are_convertible($one, $other);
    my $converter = ut_get_converter($one, $other) // return undef;
    return $converter if abs(cv_convert_double($converter, 0)) < 9e99;
    cv_free($converter);
    return undef;
}

=item C<convert($number, $from, $to)>

The number in the other unit; C<undef> if they are not compatible.

=cut

sub convert ($number, $from, $to) {
    my $converter = _converter($from, $to);
    return $converter ? cv_convert_double($converter, $number) : undef;
}

=back

=cut

1;
