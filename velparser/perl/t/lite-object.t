# Objects: made, ended, derived, forged, shared with nobody.
use strict;
use warnings;

use Test::More;

use VEL::Parser::Lite;

sub died {
    my ($code) = @_;
    return eval { $code->(); 1 } ? 'lived' : $@ =~ s/ at \S+ line \d+\.\n\z//r;
}

my @warnings;
local $SIG{__WARN__} = sub { push @warnings, @_ };

my $data = VEL::Parser::Lite::NEW();
is ref $data, 'VEL::Parser::Lite', 'NEW blesses into the package';
like $$data, qr/^[1-9]\d*$/, '... a number';
is died(sub { VEL::Parser::Lite->NEW }), 'Usage: VEL::Parser::Lite::NEW()', 'NEW takes no class';

my $other = VEL::Parser::Lite::NEW();
is $data->createParam('/A', 1), undef, 'two objects';
is $other->havePath('/A'), 0, '... share nothing';

{
    package Tied;
    sub TIESCALAR { return bless [ $_[1] ] }
    sub FETCH { return $_[0][0] }
}
tie my $tied, 'Tied', $data;
my $copy = $data;
is $data->isSameDatabase($data), 1, 'one database through one object';
is $data->isSameDatabase($copy), 1, '... through a copied reference';
is $data->isSameDatabase($tied), 1, '... through a tied scalar';
is $data->isSameDatabase($other), 0, 'two databases';
is $other->isSameDatabase($data), 0, '... from the other side';
for my $stranger (undef, '', $$data, \1, [], bless({}, 'Other')) {
    my $shown = $stranger // 'undef';
    is $data->isSameDatabase($stranger), 0, "... and $shown is none";
}
untie $tied;

is $data->DESTROY(), undef, 'DESTROY may be called';
is $other->isSameDatabase($data), 0, '... and then the object is not valid any more';
is died(sub { $data->isSameDatabase($other) }), 'self is not of type VEL::Parser::Lite', '... nor asked';
is $data->DESTROY(), undef, '... and again';
is died(sub { $data->havePath('/') }), 'self is not of type VEL::Parser::Lite',
    '... and nothing else after it';
undef $data;

{
    package Derived;
    our @ISA = 'VEL::Parser::Lite';
    sub have { return $_[0]->havePath($_[1]) }
    package NotDestroyed;
    our @ISA = 'VEL::Parser::Lite';
    sub DESTROY { return }
}
my $derived = bless VEL::Parser::Lite::NEW(), 'Derived';
is $derived->createParam('/A', 1), undef, 'an object of a derived class';
is $derived->have('/A'), 1, '... works';
undef $derived;
bless VEL::Parser::Lite::NEW(), 'NotDestroyed';
{
    package Texted;
    our @ISA = 'VEL::Parser::Lite';
    use overload '""' => sub { die "not to be read\n" }, 'bool' => sub { 1 }, '==' => sub { 1 };
}
my $texted = bless VEL::Parser::Lite::NEW(), 'Texted';
is $texted->createParam('/A', 1), undef, 'an object with overloaded operators';
is $texted->DESTROY, undef, '... works, and ends when it is called';

for my $forged (bless(\(my $address = 12345), 'Derived'), bless({}, 'Derived'), bless([], 'Derived'),
    bless(sub { 1 }, 'Derived'))
{
    is died(sub { $forged->havePath('/') }), 'self is not of type VEL::Parser::Lite',
        "a forged object ($forged) is refused";
    no warnings 'redefine';
    bless $forged, 'Harmless';
}

my $changed = VEL::Parser::Lite::NEW();
$$changed = 99;
is $changed->havePath('/'), 0, 'a forged number in the object is not used as an address';
undef $changed;

{
    my $copy = VEL::Parser::Lite::NEW();
    my $same = $copy;
    undef $copy;
    is $same->createParam('/A', 1), undef, 'a copied reference keeps the object';
}

is died(sub { VEL::Parser::Lite::bootstrap() if defined &VEL::Parser::Lite::bootstrap }), 'lived',
    'loading twice does no harm';

SKIP: {
    skip 'no size of the process', 1 if !-r '/proc/self/statm';
    skip 'a sanitizer keeps what is freed', 1 if ($ENV{LD_PRELOAD} // '') =~ /asan/;
    my $size = sub { open my $file, '<', '/proc/self/statm' or die; (split ' ', <$file>)[1] };
    my $round = sub {
        for (1 .. 300) {
            my $object = VEL::Parser::Lite::NEW();
            my $self = $object;
            $object->addChangeHandler(sub { 1 });
            $object->registerActionHandler(sub { 1 });
            $object->loadVELData([ map { ("A: x$_", "P = $_", 'END') } 1 .. 50 ]);
            $object->getFormattedVEL('/', 79, \my @lines);
            $object->getChildList('/', \my @children, \my @groups);
            $object->getStringValue('/A:x1/P', \my $value);
            eval { $object->invokeAction('x', 1) };
        }
    };
    $round->();
    my $before = $size->();
    $round->() for 1 .. 5;
    cmp_ok $size->() - $before, '<', 500, 'destroyed objects leave no memory (pages)';
}

is "@warnings", '', 'no warnings';

done_testing;
