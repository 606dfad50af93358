# Every package is documented with all that others may call, keeps to strict, and
# compiles without a word.
use strict;
use warnings;
use Test::More;
use Cwd qw(realpath);
use File::Find;
use FindBin;
use Pod::Checker;

my $top = realpath("$FindBin::Bin/..");
my @packages;
find({ no_chdir => 1, wanted => sub { push @packages, $_ if /\.pm\z/ && !m{/t/} } }, $top);
cmp_ok scalar @packages, '>', 5, 'packages are found';

for my $file (sort @packages) {
    my $name = $file =~ s{^\Q$top\E/}{}r;
    open my $handle, '<', $file or die "$file: $!";
    my $text = do { local $/ = undef; readline $handle };
    like $text, qr/^use strict;\nuse warnings;\n/m, "$name is strict and warns";
    open my $sink, '>', \my $complaints or die $!;
    my $checker = Pod::Checker->new(-warnings => 1);
    $checker->parse_from_file($file, $sink);
    is $checker->num_errors + $checker->num_warnings, 0, "$name has sound documentation" or diag $complaints;
    like $text, qr/^=head1 NAME\n\n\S+ - \S/m, "$name has a NAME section";
    my @open = grep { !/^_/ && !is_own_business($_) } $text =~ /^sub (\w+)/gm;
    my $items = join "\n", $text =~ /^=item (.*)$/gm;
    is join(' ', grep { $items !~ /(?:\b|->)\Q$_\E\b/ } @open), '', "$name documents its functions";
    my $package = $name =~ s{/}{::}gr =~ s/\.pm\z//r;
    is qx{$^X -w -e 'require $package' 2>&1}, '', "$name loads without output";
}

# What Perl itself calls.
sub is_own_business { return $_[0] =~ /^(?:CLONE|CLONE_SKIP|DESTROY)\z/ }

done_testing;
