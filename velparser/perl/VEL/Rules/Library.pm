package VEL::Rules::Library;

use strict;
use warnings;
use feature 'signatures';

use VEL::Path qw(split_path);
use VEL::Rules::Source;

=head1 NAME

VEL::Rules::Library - what the rule libraries state, separate from the data

=head1 DESCRIPTION

Command data may contain F</RULES> too. It then changes values in the tree of the
database, but no rule: only library data can state rules. So the rules are compiled from
this copy. L<VEL::Model> enters the changes made by libraries.

A block is a hash of C<fields> (name => text), C<blocks> (component => block) and
C<number>, by which the blocks of one parent are ordered.

=head1 METHODS

=over

=item C<< VEL::Rules::Library->new >>

A copy without rules.

=item C<< VEL::Rules::Library->from_tree($database) >>

The current library data below F</RULES>. Earlier changes by command data are not known, so a
block that command data has also stated is left out.

=cut

=item C<< VEL::Rules::Library->before_change($database, $path, $code, $old) >>

The blocks below F</RULES> as they were before the first change of command data there.
Path, code and old value of this change are those that a handler gets.

=cut

sub new ($class) { return bless { top => _block(0), count => 0, last => '', at => undef }, $class }

sub from_tree ($class, $database) {
    return $class->new->_enter_tree($database, sub ($path) { $database->isLibrary($path) == 1 });
}

sub before_change ($class, $database, $path, $code, $old) {
    my $self = $class->new->_enter_tree($database, sub ($block) { 1 });
    if    ($code == 1)   { $self->remove($path) }
    elsif ($code == 2)   { $self->add_block($path) }
    elsif (defined $old) { $self->set_field($path, $old) }
    else                 { $self->remove($path) }
    return $self;
}

sub _enter_tree ($self, $database, $wanted) {
    my @open = $database->havePath('/RULES') ? '/RULES' : ();
    while (defined(my $path = shift @open)) {
        if ($wanted->($path)) {
            $self->add_block($path);
            $database->getChildParamList($path, \my @names);
            for my $name (@names) {
                $database->getStringValue("$path/$name", \my $value);
                $self->set_field("$path/$name", $value);
            }
        }
        $database->getChildObjectList($path, \my @blocks);
        unshift @open, map { "$path/$_" } @blocks;
    }
    return $self;
}

sub _block ($number) { return { fields => {}, blocks => {}, number => $number } }

=item C<add_block($path)>

A library states a block. True if it is new.

=item C<set_field($path, $value)>

A library states a field. True if that changes it.

=item C<remove($path)>

A block or field was removed. True if there was one.

=cut

sub add_block ($self, $path) {
    my $before = $self->{count};
    $self->_find($path, 1);
    return $self->{count} != $before;
}

sub set_field ($self, $path, $value) {
    my ($owner, $name) = split_path($path);
    my $fields = $self->_find($owner, 1)->{fields};
    return 0 if exists $fields->{$name} && $fields->{$name} eq ($value // '');
    $fields->{$name} = $value // '';
    return 1;
}

sub remove ($self, $path) {
    my ($owner, $name) = split_path($path);
    my $block = $self->_find($owner, 0) // return 0;
    $self->{last} = '';
    return defined delete $block->{fields}{$name} || defined delete $block->{blocks}{$name};
}

# The block at a path. If it is missing and $make is true, the block is made. The last block
# is kept, because the fields of a block come one after the other.
sub _find ($self, $path, $make) {
    return $self->{at} if $path eq $self->{last};
    my $at = $self->{top};
    my (undef, undef, @components) = split m{/}, $path;
    for my $component (@components) {
        return undef if !$make && !$at->{blocks}{$component};
        $at = $at->{blocks}{$component} //= _block(++$self->{count});
    }
    @$self{qw(last at)} = ($path, $at);
    return $at;
}

=item C<top>

Everything as new blocks of L<VEL::Rules::Source>.

=back

=cut

sub top ($self) {
    my $top  = VEL::Rules::Source::block('RULES', '/RULES');
    my @open = ([ $self->{top}, $top ]);
    while (my $next = pop @open) {
        my ($own, $copy) = @$next;
        $copy->{fields} = { %{ $own->{fields} } };
        my $blocks = $own->{blocks};
        for my $component (sort { $blocks->{$a}{number} <=> $blocks->{$b}{number} } keys %$blocks) {
            my $inner = VEL::Rules::Source::block($component, "$copy->{path}/$component");
            push @{ $copy->{blocks} }, $inner;
            push @open, [ $blocks->{$component}, $inner ];
        }
    }
    return $top;
}

1;
